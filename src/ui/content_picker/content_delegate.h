// Paints a line of the content picker's tree and locates its parts.
#pragma once

#include "ui/content_picker/content_tree_model.h"
#include "ui/widgets/tree_row.h"

#include <QStyledItemDelegate>

namespace zembrastel::ui {

class ContentDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    enum class Part { none, chevron, tick, retry };

    ContentDelegate(const ContentTreeModel& rowModel, QObject* parent);

    // The part under a point of the viewport. `whole` is the row's place in the list.
    [[nodiscard]] Part partAt(
        const QRect& whole, const QModelIndex& index, const QPoint& point, Qt::LayoutDirection direction) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    struct Places;

    [[nodiscard]] Places placesOf(const TreeRow& row, const ContentLine& line, const QString& name) const;
    void markMatch(RowPainter& painter, const QRect& nameAt, TextStyle style, const QString& name) const;
    void paintEntry(RowPainter& painter, const Places& at, const ContentLine& line, const QString& name) const;

    const ContentTreeModel& rows;
};

} // namespace zembrastel::ui
