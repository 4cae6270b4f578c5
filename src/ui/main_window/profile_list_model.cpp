#include "ui/main_window/profile_list_model.h"

#include "ui/theme/text_style.h"

#include <algorithm>

namespace zembrastel::ui {
namespace {

std::vector<Uuid> idsOf(const std::vector<Profile>& profiles) {
    std::vector<Uuid> ids;
    ids.reserve(profiles.size());
    for (const auto& profile : profiles) ids.push_back(profile.id);
    return ids;
}

} // namespace

ProfileListModel::ProfileListModel(ModelBridge& modelBridge, QObject* parent)
    : QAbstractListModel(parent), bridge(modelBridge), rows(idsOf(bridge.model().profiles())) {
    connect(&bridge, &ModelBridge::profilesChanged, this, &ProfileListModel::takeProfiles);
    const auto repaint = [this](const Uuid& id) {
        const QModelIndex row = indexOf(id);
        if (row.isValid()) Q_EMIT dataChanged(row, row);
    };
    connect(&bridge, &ModelBridge::statusChanged, this, repaint);
    connect(&bridge, &ModelBridge::reviewChanged, this, repaint);
}

const Uuid& ProfileListModel::idAt(const QModelIndex& index) const {
    return rows.at(static_cast<std::size_t>(index.row()));
}

QModelIndex ProfileListModel::indexOf(const Uuid& id) const {
    const auto found = std::ranges::find(rows, id);
    return found == rows.end() ? QModelIndex() : index(static_cast<int>(found - rows.begin()));
}

const ProfileStatus& ProfileListModel::statusAt(const QModelIndex& index) const {
    return bridge.model().status(idAt(index));
}

bool ProfileListModel::runningAt(const QModelIndex& index) const { return bridge.model().running(idAt(index)); }

QString ProfileListModel::summaryAt(const QModelIndex& index) const {
    const ProfileStatus& status = statusAt(index);
    const auto missing = bridge.model().missingOnServer(idAt(index)).size();
    if (missing == 0 || status.unsaved || status.phase != Phase::watching)
        return QString::fromStdString(status.title());
    return missing == 1 ? tr("1 file is missing") : tr("%1 files are missing").arg(missing);
}

int ProfileListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows.size());
}

QVariant ProfileListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Profile* const profile = bridge.model().profile(idAt(index));
    if (profile == nullptr) return {};
    const QString name = QString::fromStdString(profile->name);
    switch (role) {
    case Qt::DisplayRole:
        return name;
    case Qt::ToolTipRole:
        return asToolTip(name);
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1, %2").arg(name, summaryAt(index));
    case Qt::AccessibleDescriptionRole:
        return tr("Edit profile, Remove profile");
    default:
        return {};
    }
}

void ProfileListModel::takeProfiles() {
    auto next = idsOf(bridge.model().profiles());
    if (next == rows) {
        if (!rows.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    beginResetModel();
    rows = std::move(next);
    endResetModel();
}

} // namespace zembrastel::ui
