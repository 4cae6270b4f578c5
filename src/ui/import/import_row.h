// Paints a row of an import: the tick, the name, the server, the local folder with its button, and what to know of it.
#pragma once

#include "ui/import/import_list.h"
#include "ui/widgets/row_painter.h"

#include <QStyledItemDelegate>

namespace zembrastel::ui {

class ImportRow : public QStyledItemDelegate {
    Q_OBJECT

public:
    enum Part : int { none, tick, folder };

    ImportRow(const ImportRows& rowModel, QObject* parent);

    // What a click there is on. `row` is the row's place in the list.
    [[nodiscard]] Part partAt(const QRect& row, int number, const QPoint& point, Qt::LayoutDirection direction) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    [[nodiscard]] static QRect buttonIn(const QRect& row, const ImportLine& line);
    static void paintTexts(RowPainter& painter, const QRect& row, const ImportLine& line);

    const ImportRows& rows;
};

} // namespace zembrastel::ui
