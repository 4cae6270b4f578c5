// The areas that a window is made of: cards, banners, sidebar, footer, dividers.
#pragma once

#include <QFrame>

namespace zembrastel::ui {

enum class Surface { card, infoBanner, warningBanner, side, footer };

void setSurface(QFrame& frame, Surface surface);
[[nodiscard]] QFrame* makeSurface(Surface surface, QWidget* parent = nullptr);

// A line of one pixel, lying or standing.
[[nodiscard]] QFrame* makeDivider(Qt::Orientation orientation, QWidget* parent = nullptr);

} // namespace zembrastel::ui
