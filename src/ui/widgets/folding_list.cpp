#include "ui/widgets/folding_list.h"

#include "ui/widgets/tree_row.h"

#include <QScrollBar>

namespace zembrastel::ui {

QModelIndex FoldingRows::folderOf(const QModelIndex& child) const {
    for (int row = child.row() - 1; row >= 0; --row) {
        if (depthOf(index(row)) < depthOf(child)) return index(row);
    }
    return {};
}

QString FoldingRows::levelOf(const QModelIndex& row) const { return tr("level %1").arg(depthOf(row) + 1); }

FoldingList::FoldingList(FoldingRows& shown, QWidget* parent) : RowList(parent), tree(shown) {
    setModel(&tree);
    setUniformItemSizes(true);
    verticalScrollBar()->setSingleStep(TreeRow::height());
}

// When a message is replaced, the current line stays at its place: it becomes the first line that replaces the message,
// or the folder if that was closed.
void FoldingList::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    const int current = currentIndex().row();
    const bool currentIsRemoved = current >= first && current <= last;
    if (currentIsRemoved && first > 0) setCurrentIndex(tree.index(first - 1));
    RowList::rowsAboutToBeRemoved(parent, first, last);
    if (currentIsRemoved) rowToRestore = first;
}

void FoldingList::rowsInserted(const QModelIndex& parent, int first, int last) {
    RowList::rowsInserted(parent, first, last);
    if (rowToRestore == first) setCurrentIndex(tree.index(first));
}

void FoldingList::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    RowList::dataChanged(first, last, roles);
    rowToRestore.reset(); // the last step of each update
}

bool FoldingList::keyPressed(const QModelIndex& row, int key) {
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // On a message, Enter never presses the default button: a second Enter after "Retry" would confirm the sheet.
        if (!tree.isMessage(row)) return false;
        tree.retry(row);
        return true;
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
void FoldingList::unfold(const QModelIndex& row) {
    if (!tree.isFolder(row)) return;
    if (!tree.isOpen(row)) {
        tree.toggleFold(row);
        return;
    }
    const QModelIndex next = tree.index(row.row() + 1);
    if (next.isValid() && tree.depthOf(next) > tree.depthOf(row)) setCurrentIndex(next);
}

// Closes an open folder; from any other line, moves to the folder that contains it.
void FoldingList::fold(const QModelIndex& row) {
    if (tree.isOpen(row)) {
        tree.toggleFold(row);
    } else if (const QModelIndex folder = tree.folderOf(row); folder.isValid()) {
        setCurrentIndex(folder);
    }
}

} // namespace zembrastel::ui
