// A list whose rows are worked part by part, with pointer and keys: the base of the lists with tick boxes.
//
// Main thread. What a click means is told when the button goes up, and only where it went down on the same part of the
// same row: a row may have come between under the pointer since.
#pragma once

#include <QListView>
#include <QPersistentModelIndex>

namespace zembrastel::ui {

class RowList : public QListView {
    Q_OBJECT

public:
    explicit RowList(QWidget* parent = nullptr);

protected:
    // The part of a row that a point of the viewport is on; 0 where a click means nothing.
    [[nodiscard]] virtual int partAt(const QModelIndex& row, const QPoint& point) const = 0;
    virtual void partClicked(const QModelIndex& row, int part) = 0;
    // Says whether the key meant something on that row.
    [[nodiscard]] virtual bool keyPressed(const QModelIndex& row, int key) = 0;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void rememberPressed(const QMouseEvent& event);

    QPersistentModelIndex pressedRow;
    int pressedPart = 0;
};

} // namespace zembrastel::ui
