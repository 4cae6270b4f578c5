#include "ui/widgets/row_painter.h"

#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <QAbstractItemView>
#include <QCursor>
#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int badgePadding = 8;

std::string_view symbolOf(Qt::CheckState state) {
    switch (state) {
    case Qt::Checked:
        return "checkmark.square.fill";
    case Qt::PartiallyChecked:
        return "minus.square.fill";
    case Qt::Unchecked:
        break;
    }
    return "square";
}

} // namespace

int lineWidth(TextStyle style, const QString& text) { return QFontMetrics(fontOf(style)).horizontalAdvance(text); }

int lineHeight(TextStyle style) { return QFontMetrics(fontOf(style)).height(); }

QRect centredIn(const QRect& row, int left, const QSize& size) {
    return {QPoint(left, row.top() + (row.height() - size.height()) / 2), size};
}

RowPainter::RowPainter(QPainter& target, const QStyleOptionViewItem& rowOption) : painter(target), option(rowOption) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
}

RowPainter::~RowPainter() { painter.restore(); }

QRect RowPainter::visual(const QRect& part) const { return QStyle::visualRect(option.direction, option.rect, part); }

bool RowPainter::hovered(const QRect& part) const {
    const auto* const view = qobject_cast<const QAbstractItemView*>(option.widget);
    return hovered() && view != nullptr && visual(part).contains(view->viewport()->mapFromGlobal(QCursor::pos()));
}

void RowPainter::plate(const QRect& where, const QColor& colour, double radius) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRoundedRect(visual(where), radius, radius);
}

void RowPainter::rowPlate(const QRect& where) {
    if (!selected() && !hovered()) return;
    const Colours& now = colours();
    painter.setPen(selected() ? QPen(now.selectedBorder, 1) : QPen(Qt::NoPen));
    painter.setBrush(selected() ? now.selected : now.hover);
    const QRectF place(visual(where));
    painter.drawRoundedRect(selected() ? place.adjusted(0.5, 0.5, -0.5, -0.5) : place, 8, 8);
}

void RowPainter::focusRing(const QRect& plate, double radius) {
    if (!option.state.testFlag(QStyle::State_HasFocus)) return;
    if (!option.state.testFlag(QStyle::State_KeyboardFocusChange)) return;
    painter.setPen(QPen(colours().focus, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(visual(plate)).adjusted(1, 1, -1, -1), radius - 1, radius - 1);
}

void RowPainter::divider(int left, int right) {
    painter.fillRect(
        visual(QRect(QPoint(left, option.rect.bottom()), QPoint(right, option.rect.bottom()))), colours().line);
}

int RowPainter::line(const QRect& where, const QString& text, const LineLook& look) {
    painter.setFont(fontOf(look.style));
    painter.setPen(look.colour);
    // A name or a path keeps its own direction in every layout.
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const QString visible = painter.fontMetrics().elidedText(text, look.elide, where.width());
    const auto alignment = QStyle::visualAlignment(option.direction, look.side) | Qt::AlignAbsolute | Qt::AlignVCenter;
    painter.drawText(visual(where), static_cast<int>(alignment) | Qt::TextSingleLine, visible);
    return painter.fontMetrics().horizontalAdvance(visible);
}

void RowPainter::symbol(const QRect& where, std::string_view name, const QColor& colour) {
    paintSymbol(painter, visual(where), name, colour);
}

void RowPainter::turningSymbol(const QRect& where, std::string_view name, const QColor& colour) {
    if (const auto* const view = qobject_cast<const QAbstractItemView*>(option.widget)) {
        paintTurning(painter, visual(where), name, colour, *view->viewport());
    }
}

void RowPainter::tick(const QRect& where, Qt::CheckState state, bool pale) {
    const bool empty = state == Qt::Unchecked;
    const Colours& now = colours();
    paintSymbol(painter, visual(where), symbolOf(state), empty || pale ? now.edge : now.accent, 0, now.card);
}

int RowPainter::badgeWidth(const QString& text) { return lineWidth(TextStyle::badge, text) + 2 * badgePadding; }

int RowPainter::badgeHeight() { return std::max(20, lineHeight(TextStyle::badge) + 4); }

void RowPainter::badge(const QRect& where, const QString& text, bool accented) {
    const Colours& now = colours();
    painter.setPen(theme().highContrast() ? QPen(accented ? now.softBorder : now.edge, 1) : QPen(Qt::NoPen));
    painter.setBrush(accented ? now.soft : now.side);
    const double inset = theme().highContrast() ? 0.5 : 0;
    const double radius = where.height() / 2.0;
    painter.drawRoundedRect(QRectF(visual(where)).adjusted(inset, inset, -inset, -inset), radius, radius);
    painter.setFont(fontOf(TextStyle::badge));
    painter.setPen(accented ? colours().accentHover : colours().dim);
    painter.drawText(visual(where), Qt::AlignCenter | Qt::TextSingleLine, text);
}

void RowPainter::button(const QRect& where, const QString& text) {
    painter.setPen(colours().control);
    painter.setBrush(hovered(where) ? colours().hover : colours().card);
    painter.drawRoundedRect(QRectF(visual(where)).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    painter.setFont(fontOf(TextStyle::body));
    painter.setPen(colours().text);
    painter.drawText(visual(where), Qt::AlignCenter | Qt::TextSingleLine, text);
}

} // namespace zembrastel::ui
