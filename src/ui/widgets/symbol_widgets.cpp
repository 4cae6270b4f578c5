#include "ui/widgets/symbol_widgets.h"

#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"

#include <QPainter>

namespace zembrastel::ui {
namespace {

QColor background(TileKind kind) {
    switch (kind) {
    case TileKind::soft:
        return colours().soft;
    case TileKind::warning:
        return colours().warnSoft;
    case TileKind::filled:
        return colours().accent;
    case TileKind::bare:
        break;
    }
    return Qt::transparent;
}

QColor foreground(TileKind kind) {
    if (kind == TileKind::warning) return colours().warn;
    return kind == TileKind::filled ? colours().onAccent : colours().accent;
}

} // namespace

Tile::Tile(std::string_view symbolName, TileKind tileKind, int side, QWidget* parent)
    : QWidget(parent), symbol(symbolName), kind(tileKind) {
    setFixedSize(side, side);
}

void Tile::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool bordered = theme().highContrast() && kind != TileKind::bare;
    painter.setPen(bordered ? QPen(foreground(kind), 1) : QPen(Qt::NoPen));
    painter.setBrush(background(kind));
    const double radius = width() / 4.0;
    const double inset = bordered ? 0.5 : 0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius, radius);
    const int side = width() < 60 ? (width() < 44 ? 20 : 22) : width() * 5 / 9;
    QRect middle(0, 0, side, side);
    middle.moveCenter(rect().center());
    paintSymbol(painter, middle, symbol, foreground(kind));
}

SymbolView::SymbolView(std::string_view symbolName, ColourRole colourRole, int shownSide, QWidget* parent)
    : QWidget(parent), symbol(symbolName), colour(colourRole), size(shownSide) {
    setFixedSize(size, size);
}

void SymbolView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // Centred, because the widget may be wider than its symbol.
    painter.drawPixmap(
        (width() - size) / 2, (height() - size) / 2,
        symbolPixmap(symbol, size, colours().*colour, devicePixelRatioF()));
}

} // namespace zembrastel::ui
