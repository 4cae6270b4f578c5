#include "ui/main_window/activity_model.h"

#include "ui/theme/local_time.h"
#include "ui/theme/text_style.h"

#include <algorithm>

namespace zembrastel::ui {

void ActivityModel::setActivity(const std::deque<Activity>& activity) {
    const auto known = lines.empty() ? activity.end() : std::ranges::find(activity, lines.front().id, &Activity::id);
    if (known == activity.end()) {
        if (!activity.empty() || !lines.empty()) replace(activity);
        return;
    }
    if (const auto added = known - activity.begin(); added > 0) {
        beginInsertRows({}, 0, static_cast<int>(added) - 1);
        lines.insert(lines.begin(), activity.begin(), known);
        endInsertRows();
    }
    if (lines.size() > activity.size()) {
        beginRemoveRows({}, static_cast<int>(activity.size()), rowCount() - 1);
        lines.resize(activity.size());
        endRemoveRows();
    }
}

void ActivityModel::replace(const std::deque<Activity>& activity) {
    beginResetModel();
    lines = activity;
    endResetModel();
}

const Activity& ActivityModel::at(const QModelIndex& index) const {
    return lines.at(static_cast<std::size_t>(index.row()));
}

int ActivityModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

QVariant ActivityModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const QString text = QString::fromStdString(at(index).text);
    switch (role) {
    case Qt::DisplayRole:
        return text;
    case Qt::ToolTipRole:
        return asToolTip(text);
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1, %2").arg(text, logTime(localTime(at(index).date), QDateTime::currentDateTime()));
    default:
        return {};
    }
}

std::string_view activitySymbol(const Activity& activity) {
    switch (activity.kind) {
    case Activity::Kind::failure:
        return "exclamationmark.circle";
    case Activity::Kind::uploaded:
        return "arrow.up";
    case Activity::Kind::downloaded:
        return "arrow.down";
    case Activity::Kind::note:
        break;
    }
    return "dot";
}

} // namespace zembrastel::ui
