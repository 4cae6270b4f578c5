// The changes of a review as a list with ticks: model, delegate and view.
//
// Main thread. The review must outlive the model. A click anywhere in a row, or Space, changes the tick.
#pragma once

#include "app/app_model.h"
#include "ui/widgets/row_list.h"
#include "ui/widgets/row_painter.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QLocale>
#include <QStyledItemDelegate>

#include <set>
#include <string>
#include <vector>

namespace zembrastel::ui {

// The ticks when the sheet opens. Files that were also edited locally are not ticked, so that no local edit is replaced
// without an explicit tick.
[[nodiscard]] PathSet preselection(const std::vector<RemoteChange>& changes);

class ChangeListModel : public QAbstractListModel {
    Q_OBJECT

public:
    ChangeListModel(const RemoteReview& review, QObject* parent);

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
    [[nodiscard]] QString accessibleText(const RemoteChange& change) const;

    const std::vector<RemoteChange>& changes;
    PathSet ticked;
};

// Paints the tick, the path, both dates, and the warning where both sides changed.
class ChangeListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    // Of a row without a warning.
    static constexpr int minRowHeight = 56;

    ChangeListDelegate(const ChangeListModel& rowModel, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    static void paintTexts(RowPainter& painter, const QRect& row, const RemoteChange& change);

    const ChangeListModel& rows;
};

class ChangeListView : public RowList {
    Q_OBJECT

public:
    explicit ChangeListView(ChangeListModel& shown, QWidget* parent = nullptr);

protected:
    [[nodiscard]] int partAt(const QModelIndex& row, const QPoint& point) const override;
    void partClicked(const QModelIndex& row, int part) override;
    [[nodiscard]] bool keyPressed(const QModelIndex& row, int key) override;

private:
    ChangeListModel& rows;
};

} // namespace zembrastel::ui
