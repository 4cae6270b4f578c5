#include "ui/content_picker/content_view.h"

namespace zembrastel::ui {

ContentView::ContentView(ContentTreeModel& shown, QWidget* parent)
    : FoldingList(shown, parent), rows(shown), delegate(new ContentDelegate(shown, this)) {
    setItemDelegate(delegate);
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
    if (key != Qt::Key_Space) return FoldingList::keyPressed(row, key);
    rows.toggleTick(row);
    return true;
}

} // namespace zembrastel::ui
