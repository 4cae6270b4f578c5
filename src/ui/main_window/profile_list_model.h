// The profiles as rows of a list, in the model's order.
//
// Main thread. A row is its name, status and tool tip; it changes as the bridge tells.
#pragma once

#include "ui/bridge/model_bridge.h"

#include <QAbstractListModel>

#include <vector>

namespace zembrastel::ui {

class ProfileListModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit ProfileListModel(ModelBridge& modelBridge, QObject* parent = nullptr);

    [[nodiscard]] const Uuid& idAt(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOf(const Uuid& id) const; // invalid when there is none

    [[nodiscard]] const ProfileStatus& statusAt(const QModelIndex& index) const;
    [[nodiscard]] bool runningAt(const QModelIndex& index) const;

    // The title of its status, or of a profile that is up to date here, what is missing on its server.
    [[nodiscard]] QString summaryAt(const QModelIndex& index) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    void takeProfiles();

    ModelBridge& bridge;
    std::vector<Uuid> rows;
};

} // namespace zembrastel::ui
