// The program's symbols: drawn from its own SVG files in the colours that are asked for, sharp at every scale.
//
// Main thread. A symbol is named as the design names it: "pause.fill", "arrow.triangle.2.circlepath", ... and, of the
// program's own, "play", "folder", "file", "server", "arrow.right", "arrow.up", "arrow.down", "dot", "ellipsis",
// "pencil", "trash", "chevron.right", "chevron.down", "chevron.up".
#pragma once

#include "ui/theme/colours.h"

#include <QAbstractButton>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <string_view>
#include <vector>

namespace zembrastel::ui {

// Every name there is, in the order of the design.
[[nodiscard]] const std::vector<std::string_view>& symbolNames();

// A square picture of `points` points a side, at that device pixel ratio. Kept for the next time. The knock-out is
// the second colour of a filled symbol; without one it is `onAccent` of the theme. An unknown name gives nothing.
[[nodiscard]] QPixmap symbolPixmap(
    std::string_view symbol, int points, const QColor& colour, qreal pixelRatio, const QColor& knockOut = {});

// Draws a symbol into a rectangle, turned clockwise by `angle` degrees.
void paintSymbol(
    QPainter& painter, const QRectF& where, std::string_view symbol, const QColor& colour, double angle = 0,
    const QColor& knockOut = {});

// An icon that takes its colour from the theme whenever it is drawn, so that it need not be set again when that
// changes. Disabled, it is drawn in the colour of disabled text.
[[nodiscard]] QIcon symbolIcon(std::string_view symbol, ColourRole colour = &Colours::text);

// The same for a push button beside its text: 16 points square, with the gap that a push button leaves too small.
// Also sets the icon size.
void setButtonSymbol(
    QAbstractButton& button, std::string_view symbol, ColourRole colour = &Colours::text, bool turning = false);

} // namespace zembrastel::ui
