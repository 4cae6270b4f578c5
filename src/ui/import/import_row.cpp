#include "ui/import/import_row.h"

#include "ui/theme/theme.h"

#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int usualLine = 20;
constexpr int inset = 9; // above the first line and below the last
constexpr int endMargin = 6;
constexpr int tickLeft = 10;
constexpr int tickSide = 18;
constexpr int textLeft = 40;
constexpr int textEnd = 10;
constexpr int gap = 12;
constexpr int buttonPadding = 12;
constexpr int symbolSide = 16;

// More than the design's where the desktop's text is large.
int height() { return std::max(usualLine, lineHeight(TextStyle::strong)); }

int countOfLines(const ImportLine& line) {
    return (line.skipped ? 2 : 3) + static_cast<int>(line.candidate.notes.size());
}

} // namespace

ImportRow::ImportRow(const ImportRows& rowModel, QObject* parent) : QStyledItemDelegate(parent), rows(rowModel) {}

QSize ImportRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    return {1, 2 * inset + countOfLines(rows.line(index.row())) * height()};
}

// As though the reading direction were from left to right.
QRect ImportRow::buttonIn(const QRect& row, const ImportLine& line) {
    if (!line.takesFolder()) return {};
    const int width = lineWidth(TextStyle::body, ImportRows::folderAction(line)) + 2 * buttonPadding;
    const int right = row.right() - endMargin - textEnd;
    return {right - width + 1, row.top() + inset, width, lineHeight(TextStyle::body) + 10};
}

ImportRow::Part ImportRow::partAt(
    const QRect& row, int number, const QPoint& point, Qt::LayoutDirection direction) const {
    const ImportLine& line = rows.line(number);
    const QPoint hit = QStyle::visualRect(direction, row, QRect(point, QSize(1, 1))).topLeft();
    if (buttonIn(row, line).contains(hit)) return folder;
    return line.canBeTicked() ? tick : none;
}

void ImportRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const ImportLine& line = rows.line(index.row());
    const QRect row = option.rect.adjusted(0, 0, -endMargin, 0);
    const QRect plate = row.adjusted(0, 1, 0, -2);
    RowPainter to(*painter, option);
    if (index.row() + 1 < rows.rowCount()) to.divider(row.left() + textLeft, row.right() - textEnd);
    if (to.hovered() && line.canBeTicked()) to.plate(plate, colours().hover);
    to.focusRing(plate);
    if (!line.skipped && !line.done) {
        const QRect place(row.left() + tickLeft, row.top() + inset + (height() - tickSide) / 2, tickSide, tickSide);
        to.tick(place, line.ticked ? DownloadSelection::Mark::all : DownloadSelection::Mark::none, !line.canBeTicked());
    }
    const QRect button = buttonIn(option.rect, line);
    paintTexts(to, row.adjusted(textLeft, 0, button.isNull() ? -textEnd : -button.width() - textEnd - gap, 0), line);
    if (!button.isNull()) to.button(button, ImportRows::folderAction(line));
}

void ImportRow::paintTexts(RowPainter& painter, const QRect& row, const ImportLine& line) {
    const Colours& now = colours();
    int top = row.top() + inset;
    const auto next = [&] {
        const QRect place(row.left(), top, row.width(), height());
        top += height();
        return place;
    };
    const LineLook details{.style = TextStyle::small, .colour = now.dim};
    const auto warn = [&](const QString& text) {
        QRect place = next();
        painter.symbol(centredIn(place, place.left(), {symbolSide, symbolSide}), "exclamationmark.triangle", now.warn);
        place.setLeft(place.left() + symbolSide + 6);
        painter.line(place, text, {.style = TextStyle::small, .colour = now.warnText, .elide = Qt::ElideRight});
    };
    painter.line(
        next(), QString::fromStdString(line.candidate.profile.name),
        {.style = TextStyle::strong, .colour = line.canBeTicked() || line.wantsFolder ? now.text : now.dim});
    painter.line(next(), ImportRows::server(line), details);
    if (line.skipped) return;
    if (line.obstacle.empty()) {
        painter.line(next(), ImportRows::place(line), details);
    } else {
        warn(ImportRows::place(line));
    }
    for (const auto& note : line.candidate.notes) {
        painter.line(
            next(), QString::fromStdString(note),
            {.style = TextStyle::small, .colour = now.dim, .elide = Qt::ElideRight});
    }
}

} // namespace zembrastel::ui
