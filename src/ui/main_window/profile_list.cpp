#include "ui/main_window/profile_list.h"

#include "ui/main_window/profile_row.h"
#include "ui/theme/symbol_icon.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

namespace zembrastel::ui {

ProfileList::ProfileList(ModelBridge& modelBridge, QWidget* parent)
    : QListView(parent), bridge(modelBridge), rows(new ProfileListModel(modelBridge, this)) {
    setAccessibleName(tr("SYNC PROFILES"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setUniformItemSizes(true);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    setModel(rows);
    auto* const row = new ProfileRow(*rows, this);
    setItemDelegate(row);
    connect(row, &ProfileRow::moreRequested, this, &ProfileList::showMenu);
    connect(rows, &QAbstractItemModel::modelReset, this, &ProfileList::showSelection);
    connect(&bridge, &ModelBridge::selectionChanged, this, &ProfileList::showSelection);
    showSelection();
}

void ProfileList::showSelection() {
    const auto& selected = bridge.model().selection();
    setCurrentIndex(selected ? rows->indexOf(*selected) : QModelIndex());
}

void ProfileList::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QListView::currentChanged(current, previous);
    if (current.isValid()) bridge.model().select(rows->idAt(current));
}

void ProfileList::keyPressEvent(QKeyEvent* event) {
    const QModelIndex index = currentIndex();
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (index.isValid() && enter) {
        Q_EMIT editRequested(rows->idAt(index));
    } else if (index.isValid() && event->key() == Qt::Key_Delete) {
        Q_EMIT removeRequested(rows->idAt(index));
    } else {
        QListView::keyPressEvent(event);
    }
}

// The "more" button is drawn otherwise under the pointer, and a row knows only that the pointer is somewhere on it.
void ProfileList::mouseMoveEvent(QMouseEvent* event) {
    QListView::mouseMoveEvent(event);
    const QModelIndex under = indexAt(event->position().toPoint());
    if (under.isValid()) update(under);
}

void ProfileList::contextMenuEvent(QContextMenuEvent* event) {
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = byKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid()) return;
    showMenu(index, byKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos());
}

void ProfileList::showMenu(const QModelIndex& index, const QPoint& globalPosition) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const Uuid id = rows->idAt(index);
    menu->addAction(symbolIcon("pencil"), tr("Edit profile"), this, [this, id] { Q_EMIT editRequested(id); });
    const Profile* const profile = bridge.model().profile(id);
    auto* const send = menu->addAction(
        symbolIcon("arrow.up"), tr("Send everything again…"), this, [this, id] { Q_EMIT sendAllRequested(id); });
    send->setEnabled(profile != nullptr && !profile->needsDownload && !profile->hasEmptySyncSelection());
    menu->addAction(symbolIcon("trash"), tr("Remove profile"), this, [this, id] { Q_EMIT removeRequested(id); });
    menu->popup(globalPosition);
}

} // namespace zembrastel::ui
