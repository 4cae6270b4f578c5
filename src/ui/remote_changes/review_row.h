// Paints a row of the review: the tick, the path, both dates, and a warning where there is one.
#pragma once

#include "ui/remote_changes/change_list.h"
#include "ui/widgets/row_painter.h"

#include <QStyledItemDelegate>

namespace zembrastel::ui {

class ReviewRow : public QStyledItemDelegate {
    Q_OBJECT

public:
    // Without the warning.
    static constexpr int lowestRow = 56;

    ReviewRow(const ReviewRows& rowModel, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    static void paintTexts(RowPainter& painter, const QRect& row, const RemoteChange& change);

    const ReviewRows& rows;
};

} // namespace zembrastel::ui
