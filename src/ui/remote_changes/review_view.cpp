#include "ui/remote_changes/review_view.h"

#include "ui/remote_changes/review_row.h"

#include <QScrollBar>

namespace zembrastel::ui {

ReviewView::ReviewView(ReviewRows& shown, QWidget* parent) : RowList(parent), rows(shown) {
    setModel(&rows);
    setItemDelegate(new ReviewRow(rows, this));
    verticalScrollBar()->setSingleStep(ReviewRow::lowestRow / 2);
}

int ReviewView::partAt(const QModelIndex&, const QPoint&) const { return 1; }

void ReviewView::partClicked(const QModelIndex& row, int) { rows.toggle(row); }

bool ReviewView::keyPressed(const QModelIndex& row, int key) {
    if (key != Qt::Key_Space) return false;
    rows.toggle(row);
    return true;
}

} // namespace zembrastel::ui
