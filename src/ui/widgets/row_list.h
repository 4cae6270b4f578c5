// A list whose rows consist of parts that react to pointer and keys: the base of the lists with tick boxes.
//
// Main thread. A click counts when the button is released on the same part of the same row as it was pressed on,
// because another row may have moved under the pointer meanwhile.
#pragma once

#include <QListView>
#include <QPersistentModelIndex>

namespace zembrastel::ui {

class RowList : public QListView {
    Q_OBJECT

public:
    explicit RowList(QWidget* parent = nullptr);

protected:
    // The part of a row under a point of the viewport; 0 if a click there does nothing.
    [[nodiscard]] virtual int partAt(const QModelIndex& row, const QPoint& point) const = 0;
    virtual void partClicked(const QModelIndex& row, int part) = 0;
    // Returns whether the row handled the key.
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
