// The areas of a window (cards, banners, sidebar, footer, dividers), the properties that the style sheet selects by,
// and margins that follow the reading direction.
//
// Main thread. Qt does not mirror the margins of layouts by itself, nor a text in a script of the other direction.
#pragma once

#include <QFrame>
#include <QMargins>
#include <QString>
#include <QVariant>
#include <QWidget>

namespace zembrastel::ui {

// Sets the property and applies the style sheet again, which Qt does not do by itself.
void setStyleProperty(QWidget& widget, const char* name, const QVariant& value);

[[nodiscard]] bool readsFromRight();

[[nodiscard]] QMargins readingMargins(int start, int top, int end, int bottom);

// The side where lines begin, whatever the script of the text.
[[nodiscard]] Qt::Alignment readingStart();

// Keeps the dots of an untranslated label at its end in a right-to-left layout.
[[nodiscard]] QString inItsOwnDirection(const QString& label);

enum class Surface { card, infoBanner, warningBanner, side, footer };

void setSurface(QFrame& frame, Surface surface);
[[nodiscard]] QFrame* makeSurface(Surface surface, QWidget* parent = nullptr);

// A line of one pixel, horizontal or vertical.
[[nodiscard]] QFrame* makeDivider(Qt::Orientation orientation, QWidget* parent = nullptr);

} // namespace zembrastel::ui
