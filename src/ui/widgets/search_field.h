// A line edit that filters the list below it.
//
// Escape clears it; without a text, Escape is left to the dialog. Down moves to the list.
#pragma once

#include <QAbstractItemView>
#include <QAction>
#include <QLineEdit>

namespace zembrastel::ui {

class SearchField : public QLineEdit {
    Q_OBJECT

public:
    // `prompt` is the placeholder and the accessible name. Ctrl+F in the window moves to the field while it is visible.
    explicit SearchField(const QString& prompt, QWidget* parent = nullptr);

    // The list to move to.
    void setList(QAbstractItemView& list) { below = &list; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QAction* clearing;
    QAbstractItemView* below = nullptr;
};

} // namespace zembrastel::ui
