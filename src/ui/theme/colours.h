// The colours of the program: a table for the light and for the dark appearance, each also with high contrast.
//
// Values without widgets; any thread. A colour is named by its member, so that drawing code can name it once and read
// it from the current table: `colours.*role`.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

namespace zembrastel::ui {

struct Colours {
    QColor window;         // page and dialog
    QColor side;           // sidebar, footer of a dialog, grey badge
    QColor card;           // card, button, menu
    QColor field;          // line edit, combo box, text area
    QColor line;           // border of a card, divider
    QColor control;        // border of a button, handle of a scroll bar
    QColor fieldBorder;    // border of a field
    QColor edge;           // empty tick box, switch off, neutral dot, disabled text
    QColor text;           // main text
    QColor dim;            // secondary text, captions, placeholder
    QColor accent;         // status icons, primary button, links, ticks
    QColor focus;          // ring around what has the keyboard focus
    QColor primaryFocus;   // border of a primary button that has the focus
    QColor accentHover;    // primary button under the pointer
    QColor accentPress;    // primary button held down
    QColor onAccent;       // text and knock-outs on accent
    QColor soft;           // icon tile, info banner, "Local only"
    QColor softBorder;     // border of an info banner
    QColor selected;       // selected row, button held down
    QColor selectedBorder; // around a selected row
    QColor selectedDim;    // secondary text on a selected row
    QColor warn;           // failed icon
    QColor warnText;       // orange text
    QColor warnSoft;       // warning banner, tile behind the triangle
    QColor warnBorder;     // border of a warning banner
    QColor hover;          // row or button under the pointer
};

using ColourRole = QColor Colours::*;

[[nodiscard]] const Colours& lightColours();
[[nodiscard]] const Colours& darkColours();
[[nodiscard]] const Colours& lightContrastColours();
[[nodiscard]] const Colours& darkContrastColours();

[[nodiscard]] QPalette paletteOf(const Colours& colours);

// Replaces every `@member` of a style sheet by that colour. Unknown names are left unchanged.
[[nodiscard]] QString withColours(const QString& styleSheet, const Colours& colours);

} // namespace zembrastel::ui
