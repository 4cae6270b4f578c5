#include "ui/content_picker/content_view.h"

#include <QScrollBar>

namespace zembrastel::ui {

ContentView::ContentView(ContentTreeModel& shown, QWidget* parent)
    : RowList(parent), rows(shown), delegate(new ContentDelegate(shown, this)) {
    setModel(&rows);
    setItemDelegate(delegate);
    setUniformItemSizes(true);
    verticalScrollBar()->setSingleStep(ContentDelegate::height());
}

// When a message is replaced, the current line stays at its place: it becomes the first line that replaces the message,
// or the folder if that was closed.
void ContentView::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    const int current = currentIndex().row();
    const bool currentIsRemoved = current >= first && current <= last;
    if (currentIsRemoved && first > 0) setCurrentIndex(rows.index(first - 1));
    RowList::rowsAboutToBeRemoved(parent, first, last);
    if (currentIsRemoved) rowToRestore = first;
}

void ContentView::rowsInserted(const QModelIndex& parent, int first, int last) {
    RowList::rowsInserted(parent, first, last);
    if (rowToRestore == first) setCurrentIndex(rows.index(first));
}

void ContentView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    RowList::dataChanged(first, last, roles);
    rowToRestore.reset(); // the last step of each update
}

int ContentView::partAt(const QModelIndex& row, const QPoint& point) const {
    return static_cast<int>(delegate->partAt(visualRect(row), row, point, layoutDirection()));
}

void ContentView::partClicked(const QModelIndex& row, int part) {
    switch (static_cast<ContentDelegate::Part>(part)) {
    case ContentDelegate::Part::chevron:
        rows.toggleFold(row);
        break;
    case ContentDelegate::Part::tick:
        rows.toggleTick(row);
        break;
    case ContentDelegate::Part::retry:
        rows.retry(row);
        break;
    case ContentDelegate::Part::none:
        break;
    }
}

bool ContentView::keyPressed(const QModelIndex& row, int key) {
    const bool message = !rows.line(row).isEntry();
    switch (key) {
    case Qt::Key_Space:
        rows.toggleTick(row);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // On a message, Enter never presses the default button: a second Enter after "Retry" would confirm the sheet.
        rows.retry(row);
        return message;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if ((key == Qt::Key_Right) != isRightToLeft()) {
            unfold(row);
        } else {
            fold(row);
        }
        return true;
    default:
        return false;
    }
}

// Opens a folder; if it is open, moves to its first line.
void ContentView::unfold(const QModelIndex& row) {
    const ContentLine& line = rows.line(row);
    if (!line.isFolder()) return;
    if (!rows.isOpen(line)) {
        rows.toggleFold(row);
        return;
    }
    const QModelIndex next = rows.index(row.row() + 1);
    if (next.isValid() && rows.line(next).depth > line.depth) setCurrentIndex(next);
}

// Closes an open folder; from any other line, moves to the folder that contains it.
void ContentView::fold(const QModelIndex& row) {
    if (rows.isOpen(rows.line(row))) {
        rows.toggleFold(row);
    } else if (const QModelIndex folder = rows.folderOf(row); folder.isValid()) {
        setCurrentIndex(folder);
    }
}

} // namespace zembrastel::ui
