#include "ui/remote_changes/review_row.h"

#include "ui/theme/theme.h"

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int rowWithWarning = 80;
constexpr int usualLine = 20;
constexpr int endMargin = 6; // room to the scroll bar
constexpr int tickLeft = 10;
constexpr int tickTop = 10;
constexpr int tickSide = 18;
constexpr int textLeft = 40;
constexpr int textEnd = 10;
constexpr int columnWidth = 196;
constexpr int columnGap = 16;
constexpr int triangleSide = 16;

// What each line of a row needs above the design's where the desktop's text is large.
int extraPerLine() { return std::max(0, lineHeight(TextStyle::strong) - usualLine); }

} // namespace

ReviewRow::ReviewRow(const ReviewRows& rowModel, QObject* parent) : QStyledItemDelegate(parent), rows(rowModel) {}

QSize ReviewRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    const int extra = extraPerLine();
    return {1, rows.change(index).bothChanged ? rowWithWarning + 3 * extra : lowestRow + 2 * extra};
}

void ReviewRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const RemoteChange& change = rows.change(index);
    const QRect row = option.rect.adjusted(0, 0, -endMargin, 0);
    const QRect plate = row.adjusted(0, 1, 0, -2);
    RowPainter to(*painter, option);
    if (index.row() + 1 < rows.rowCount()) to.divider(row.left() + textLeft, row.right() - textEnd);
    if (to.hovered()) to.plate(plate, colours().hover);
    to.focusRing(plate);
    const QRect tick(row.left() + tickLeft, row.top() + tickTop + extraPerLine() / 2, tickSide, tickSide);
    to.tick(tick, rows.isTicked(change) ? DownloadSelection::Mark::all : DownloadSelection::Mark::none);
    paintTexts(to, row.adjusted(textLeft, 0, -textEnd, 0), change);
}

void ReviewRow::paintTexts(RowPainter& painter, const QRect& row, const RemoteChange& change) {
    const Colours& now = colours();
    const int extra = extraPerLine();
    const auto lineAt = [&](int number, int top) {
        return QRect(row.left(), row.top() + top + number * extra, row.width(), usualLine + extra);
    };
    const LineLook dates{.style = TextStyle::small, .colour = now.dim, .elide = Qt::ElideRight};
    painter.line(lineAt(0, 9), QString::fromStdString(change.path), {.style = TextStyle::strong, .colour = now.text});
    QRect where = lineAt(1, 29);
    const int local = painter.line(where, ReviewRows::localDate(change), dates);
    where.setLeft(where.left() + std::max(columnWidth, local + columnGap));
    painter.line(where, ReviewRows::serverDate(change), dates);
    if (!change.bothChanged) return;
    QRect warning = lineAt(2, 51);
    const QRect triangle(warning.left(), warning.top() + 2 + extra / 2, triangleSide, triangleSide);
    painter.symbol(triangle, "exclamationmark.triangle", now.warn);
    warning.setLeft(triangle.right() + 7);
    painter.line(
        warning, ReviewRows::warning(),
        {.style = TextStyle::fieldLabel, .colour = now.warnText, .elide = Qt::ElideRight});
}

} // namespace zembrastel::ui
