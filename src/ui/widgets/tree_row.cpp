#include "ui/widgets/tree_row.h"

#include "ui/theme/theme.h"

#include <QCoreApplication>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int indent = 24;
constexpr int endMargin = 6; // room for the scroll bar
constexpr int chevronLeft = 6;
constexpr int chevronSide = 16;
constexpr int messageLeft = 56;
constexpr int messageSide = 16;
constexpr int retryHeight = 26;
constexpr int retryPadding = 15;

QString retryLabel() { return QCoreApplication::translate("TreeRow", "Retry"); }

int retryWidth() { return lineWidth(TextStyle::body, retryLabel()) + 2 * retryPadding; }

} // namespace

int TreeRow::height() { return std::max(32, lineHeight(TextStyle::strong) + 12); }

TreeRow::TreeRow(const QRect& whole, int depth)
    : row(whole.adjusted(0, 0, -endMargin, 0)), left(row.left() + depth * indent) {}

QRect TreeRow::symbol(int from, int side) const { return centredIn(row, left + from, {side, side}); }

QRect TreeRow::chevron() const { return symbol(chevronLeft, chevronSide); }

QRect TreeRow::textFrom(int from) const {
    return {QPoint(left + from, row.top()), QPoint(row.right() - gap, row.bottom())};
}

// Leaves room for the button.
QRect TreeRow::failureText(const QString& text) const {
    QRect place = textFrom(messageLeft);
    const int width = std::min(lineWidth(TextStyle::body, text) + 1, place.width() - gap - retryWidth());
    place.setWidth(std::max(width, 0));
    return place;
}

QRect TreeRow::retryButton(const QString& text) const {
    const int buttonHeight = std::min(std::max(retryHeight, lineHeight(TextStyle::body) + 8), row.height());
    return centredIn(row, failureText(text).right() + gap, {retryWidth(), buttonHeight});
}

void TreeRow::paintMessage(RowPainter& painter, Message kind, const QString& text) const {
    const Colours& now = colours();
    const QRect icon = symbol(afterChevron, messageSide);
    switch (kind) {
    case Message::loading:
        painter.turningSymbol(icon, "arrow.triangle.2.circlepath", now.accent);
        painter.line(textFrom(messageLeft), text, {.colour = now.dim, .elide = Qt::ElideRight});
        break;
    case Message::failure:
        painter.symbol(icon, "exclamationmark.circle", now.warn);
        painter.line(failureText(text), text, {.colour = now.warnText, .elide = Qt::ElideRight});
        painter.button(retryButton(text), retryLabel());
        break;
    case Message::note:
        painter.line(textFrom(afterChevron), text, {.colour = now.dim, .elide = Qt::ElideRight});
        break;
    }
}

} // namespace zembrastel::ui
