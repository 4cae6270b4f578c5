// The view of the remote folders: a folding list with one selected row, and a field in the row of a new folder.
//
// Main thread. Enter uses the selected folder; in the field, Enter creates the new folder and Escape drops it.
#pragma once

#include "ui/remote_folder/folder_tree_model.h"
#include "ui/widgets/folding_list.h"

#include <QLineEdit>
#include <QPointer>
#include <QStyledItemDelegate>

namespace zembrastel::ui {

class FolderDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    FolderDelegate(const FolderTreeModel& shown, QObject* parent) : QStyledItemDelegate(parent), rows(shown) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const FolderTreeModel& rows;
};

class FolderView : public FoldingList {
    Q_OBJECT

public:
    explicit FolderView(FolderTreeModel& shown, QWidget* parent = nullptr);

    // Puts the field into the row that the model has for a new folder.
    void openField();

Q_SIGNALS:
    void chosen();
    // By a key or a click.
    void movedByUser();
    void named(const QString& name);
    void namingDropped();

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    FolderTreeModel& rows;
    QPointer<QLineEdit> field; // of the row of a new folder, which owns it
};

} // namespace zembrastel::ui
