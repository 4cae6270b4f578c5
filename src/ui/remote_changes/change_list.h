// The changes of a review as a list, each with its tick.
//
// Main thread. The review must outlive the rows.
#pragma once

#include "app/app_model.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QLocale>

#include <set>
#include <string>
#include <vector>

namespace zembrastel::ui {

// What is ticked when the sheet opens: what was not edited locally as well, so that no local edit is replaced without
// an explicit tick.
[[nodiscard]] PathSet preselection(const std::vector<RemoteChange>& changes);

// A date as that locale writes it, the month in letters and without the weekday: "14 Nov 2026, 17:48".
[[nodiscard]] QString reviewDate(const QDateTime& date, const QLocale& locale);

class ReviewRows : public QAbstractListModel {
    Q_OBJECT

public:
    ReviewRows(const RemoteReview& review, QObject* parent);

    [[nodiscard]] const PathSet& selected() const { return ticked; }
    [[nodiscard]] const RemoteChange& change(const QModelIndex& index) const {
        return changes[static_cast<std::size_t>(index.row())];
    }
    [[nodiscard]] bool isTicked(const RemoteChange& change) const { return ticked.contains(change.path); }

    [[nodiscard]] static QString localDate(const RemoteChange& change);
    [[nodiscard]] static QString serverDate(const RemoteChange& change);
    [[nodiscard]] static QString warning();

    void toggle(const QModelIndex& index);
    void tickAll(bool wanted);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    [[nodiscard]] QString spoken(const RemoteChange& change) const;

    const std::vector<RemoteChange>& changes;
    PathSet ticked;
};

} // namespace zembrastel::ui
