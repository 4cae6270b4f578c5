#include "ui/backups/backup_row.h"

#include "ui/theme/theme.h"
#include "ui/widgets/row_painter.h"

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int padding = 8;
constexpr int lineGap = 2;
constexpr int endMargin = 6; // room to the scroll bar
constexpr int symbolLeft = 12;
constexpr int symbolSide = 18;
constexpr int textLeft = 42;
constexpr int textEnd = 12;
constexpr int columnWidth = 216;
constexpr int columnGap = 16;

} // namespace

BackupRow::BackupRow(const BackupRows& rowModel, QObject* parent) : QStyledItemDelegate(parent), rows(rowModel) {}

QSize BackupRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {1, 2 * padding + lineHeight(TextStyle::strong) + lineGap + lineHeight(TextStyle::small)};
}

void BackupRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const Backup& backup = rows.backup(index);
    const QRect row = option.rect.adjusted(0, 0, -endMargin, 0);
    const QRect plate = row.adjusted(0, 1, 0, -2);
    RowPainter to(*painter, option);
    if (index.row() + 1 < rows.rowCount()) to.divider(row.left() + textLeft, row.right() - textEnd);
    if (to.selected() || to.hovered()) to.plate(plate, to.selected() ? colours().selected : colours().hover);
    to.focusRing(plate);
    const QColor dim = to.selected() ? colours().selectedDim : colours().dim;
    // The first of a file carries its symbol; those below it are older.
    if (!rows.isOlderVersion(index)) {
        to.symbol(centredIn(row, row.left() + symbolLeft, {symbolSide, symbolSide}), "file", colours().accent);
    }
    QRect title(
        row.left() + textLeft, row.top() + padding, row.width() - textLeft - textEnd, lineHeight(TextStyle::strong));
    QRect where(title.left(), title.bottom() + 1 + lineGap, title.width(), lineHeight(TextStyle::small));
    const QString size = BackupRows::sizeText(backup.size);
    const int sizeWidth = lineWidth(TextStyle::small, size);
    to.line(where, size, {.style = TextStyle::small, .colour = dim, .elide = Qt::ElideNone, .side = Qt::AlignRight});
    to.line(title, QString::fromStdString(backup.path), {.style = TextStyle::strong, .colour = colours().text});
    where.setRight(where.right() - sizeWidth - columnGap);
    const LineLook dates{.style = TextStyle::small, .colour = dim, .elide = Qt::ElideRight};
    const int replaced = to.line(where, BackupRows::replacedText(backup), dates);
    where.setLeft(where.left() + std::max(columnWidth, replaced + columnGap));
    to.line(where, BackupRows::changedText(backup), dates);
}

} // namespace zembrastel::ui
