// The log of one profile as rows of a list, newest first.
//
// Main thread. New lines come in at the top, so that whoever reads further down stays on his line.
#pragma once

#include "app/profile_status.h"

#include <QAbstractListModel>

#include <deque>

namespace zembrastel::ui {

class ActivityModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    // Takes over what changed since the last time.
    void setActivity(const std::deque<Activity>& activity);

    [[nodiscard]] const Activity& at(const QModelIndex& index) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    void replace(const std::deque<Activity>& activity);

    std::deque<Activity> lines;
};

// The symbol of a line: what was done with a file, or that it is an error.
[[nodiscard]] std::string_view activitySymbol(const Activity& activity);

} // namespace zembrastel::ui
