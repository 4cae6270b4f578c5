#include "ui/widgets/symbol_view.h"

#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"

#include <QPainter>

namespace zembrastel::ui {

SymbolView::SymbolView(std::string_view symbolName, ColourRole colourRole, QWidget* parent)
    : QWidget(parent), symbol(symbolName), colour(colourRole) {
    setFixedSize(side, side);
}

void SymbolView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // The middle of a widget that was made wider than its symbol.
    painter.drawPixmap(
        (width() - side) / 2, (height() - side) / 2,
        symbolPixmap(symbol, side, colours().*colour, devicePixelRatioF()));
}

} // namespace zembrastel::ui
