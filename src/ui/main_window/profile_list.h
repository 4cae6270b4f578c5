// The list of profiles in the sidebar, which shows and sets the model's selection.
//
// Main thread. What is asked for on a row is told, not done: Enter and the menu edit, Delete and the menu remove.
#pragma once

#include "ui/main_window/profile_list_model.h"

#include <QListView>

namespace zembrastel::ui {

class ProfileList : public QListView {
    Q_OBJECT

public:
    explicit ProfileList(ModelBridge& modelBridge, QWidget* parent = nullptr);

Q_SIGNALS:
    void editRequested(const zembrastel::Uuid& id);
    void sendAllRequested(const zembrastel::Uuid& id);
    void removeRequested(const zembrastel::Uuid& id);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void showSelection();
    void showMenu(const QModelIndex& index, const QPoint& globalPosition);

    ModelBridge& bridge;
    ProfileListModel* rows;
};

} // namespace zembrastel::ui
