#include "ui/import/import_view.h"

#include <QScrollBar>

namespace zembrastel::ui {
namespace {

constexpr int scrollStep = 28;

} // namespace

ImportView::ImportView(ImportRows& shown, QWidget* parent)
    : RowList(parent), rows(shown), delegate(new ImportRow(shown, this)) {
    setModel(&rows);
    setItemDelegate(delegate);
    verticalScrollBar()->setSingleStep(scrollStep);
}

int ImportView::partAt(const QModelIndex& row, const QPoint& point) const {
    return delegate->partAt(visualRect(row), row.row(), point, layoutDirection());
}

void ImportView::partClicked(const QModelIndex& row, int part) {
    if (part == ImportRow::folder) {
        Q_EMIT folderWanted(row.row());
    } else {
        rows.toggle(row.row());
    }
}

bool ImportView::keyPressed(const QModelIndex& row, int key) {
    const ImportLine& line = rows.line(row.row());
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if ((isEnter && line.wantsFolder) || (key == Qt::Key_F2 && line.takesFolder())) {
        Q_EMIT folderWanted(row.row());
        return true;
    }
    if (key != Qt::Key_Space) return false;
    rows.toggle(row.row());
    return true;
}

} // namespace zembrastel::ui
