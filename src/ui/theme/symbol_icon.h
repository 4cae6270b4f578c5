// The program's symbols, drawn from its own SVG files in any colour, sharp at every scale.
//
// Main thread. Symbols have the names of the design: "pause.fill", "arrow.triangle.2.circlepath", ... and the program's
// own: "play", "folder", "file", "server", "arrow.right", "arrow.up", "arrow.down", "dot", "ellipsis", "pencil",
// "trash", "chevron.right", "chevron.down", "chevron.up", "magnifyingglass", "xmark", "eye", "eye.slash".
#pragma once

#include "ui/theme/colours.h"

#include <QAbstractButton>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <string_view>
#include <vector>

namespace zembrastel::ui {

// All names, in the order of the design.
[[nodiscard]] const std::vector<std::string_view>& symbolNames();

// A square picture with sides of `points` points at that device pixel ratio. Pictures are cached. The knock-out is the
// second colour of a filled symbol; by default it is the theme's `onAccent`. An unknown name yields a null picture.
[[nodiscard]] QPixmap symbolPixmap(
    std::string_view symbol, int points, const QColor& colour, qreal pixelRatio, const QColor& knockOut = {});

// Draws a symbol into a rectangle, turned clockwise by `angle` degrees.
void paintSymbol(
    QPainter& painter, const QRectF& where, std::string_view symbol, const QColor& colour, double angle = 0,
    const QColor& knockOut = {});

// An icon that takes its colour from the theme each time it is drawn, so it follows theme changes by itself. When
// disabled, it has the colour of disabled text.
[[nodiscard]] QIcon symbolIcon(std::string_view symbol, ColourRole colour = &Colours::text);

// As symbolIcon(), for a push button with a text: 16 points square, with a wider gap than a push button leaves. Also
// sets the icon size.
void setButtonSymbol(
    QAbstractButton& button, std::string_view symbol, ColourRole colour = &Colours::text, bool turning = false);

} // namespace zembrastel::ui
