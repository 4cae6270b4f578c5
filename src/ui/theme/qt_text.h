// Texts that others wrote, such as a profile's name from an imported file, made fit to stand among the program's own.
//
// Pure; any thread. Only for places where such a text shares a line with others or leaves the program: labels and lists
// of its own show every text as it is.
#pragma once

#include <QString>

namespace zembrastel::ui {

// On one line, without the characters that turn the direction of what follows.
[[nodiscard]] QString onOneLine(const QString& text);

// The same, for a place that some desktops read as markup and others as plain text: letters that look like "<", ">"
// and "&" stand in for them, since neither kind of desktop would show the other's spelling.
[[nodiscard]] QString withoutMarkup(const QString& text);

} // namespace zembrastel::ui
