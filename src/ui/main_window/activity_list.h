// "Recent activity", the log of the shown profile: model, delegate, and a card as high as its lines need, so that the
// page around it scrolls and the list itself never does.
//
// Main thread.
#pragma once

#include "app/profile_status.h"

#include <QAbstractListModel>
#include <QFrame>
#include <QListView>
#include <QStyledItemDelegate>

#include <deque>

namespace zembrastel::ui {

// The log of one profile, newest first. New lines are inserted at the top, so that the list keeps its place.
class ActivityListModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    // Updates the rows to this log.
    void setActivity(const std::deque<Activity>& activity);

    [[nodiscard]] const Activity& at(const QModelIndex& index) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    void replace(const std::deque<Activity>& activity);

    std::deque<Activity> lines;
};

// The symbol of a line: the direction of the transfer, or an error.
[[nodiscard]] std::string_view activitySymbol(const Activity& activity);

// Paints the symbol, the text, elided in its middle, and the time.
class ActivityListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    ActivityListDelegate(const ActivityListModel& rowModel, QObject* parent);

    // The same for all rows.
    [[nodiscard]] static int height();

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const ActivityListModel& rows;
};

// The card with the list.
class ActivityList : public QFrame {
    Q_OBJECT

public:
    explicit ActivityList(QWidget* parent = nullptr);

    void setActivity(const std::deque<Activity>& activity);

    [[nodiscard]] QListView& list() const { return *view; }

Q_SIGNALS:
    // A line became the current one. `place` is in the card's coordinates.
    void lineReached(const QRect& place);

private:
    [[nodiscard]] QWidget* makeEmptyPage();
    void fitLines();

    ActivityListModel* lines;
    QListView* view;
    QWidget* emptyPage;
};

} // namespace zembrastel::ui
