// Paints a row of the profile list: status symbol, name, status title, and the "more" button of a row that is selected
// or under the pointer.
#pragma once

#include "ui/main_window/profile_list_model.h"

#include <QStyledItemDelegate>

namespace zembrastel::ui {

class RowPainter;

class ProfileRow : public QStyledItemDelegate {
    Q_OBJECT

public:
    ProfileRow(const ProfileListModel& rowModel, QObject* parent);

    // Where the "more" button of a row is.
    [[nodiscard]] static QRect moreArea(const QRect& row, Qt::LayoutDirection direction);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

Q_SIGNALS:
    void moreRequested(const QModelIndex& index, const QPoint& globalPosition);

protected:
    bool editorEvent(
        QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

private:
    void paintTexts(RowPainter& painter, const QRect& row, const QModelIndex& index) const;

    const ProfileListModel& rows;
};

} // namespace zembrastel::ui
