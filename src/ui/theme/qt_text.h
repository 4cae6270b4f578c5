// Text from the core library and from other people as Qt text.
//
// Pure; any thread.
#pragma once

#include <QString>

#include <cstdint>
#include <string_view>

namespace zembrastel::ui {

// Decodes UTF-8.
[[nodiscard]] QString toQString(std::string_view utf8);

// Shows plain text in a tool tip, which would otherwise interpret text that resembles markup.
[[nodiscard]] QString asToolTip(const QString& text);

// The size of a file: "512 bytes", "412 kB", "1.8 MB". Never broken between the number and the unit.
[[nodiscard]] QString sizeText(std::uint64_t bytes);

// The two below are for text of others, such as a profile's name from an imported file, where it shares a line with the
// program's own text or leaves the program. The program's labels and lists show every text unchanged.

// Replaces line breaks and control characters by blanks and removes the characters that change the text direction.
[[nodiscard]] QString onOneLine(const QString& text);

// As onOneLine(), for a place that some desktops read as markup and others as plain text: replaces "<", ">" and "&" by
// similar letters, because an escaped text would be wrong on one kind of desktop.
[[nodiscard]] QString withoutMarkup(const QString& text);

} // namespace zembrastel::ui
