// Colours for words on a terminal, which say nothing that the words do not.
#pragma once

#include <string>
#include <string_view>

namespace zembrastel::cli {

enum class Tone { good, attention, bad };

// The text in the tone's colour where the descriptor is a terminal that has colours, and NO_COLOR is not set to
// anything; else the text alone.
[[nodiscard]] std::string inColour(std::string_view text, Tone tone, int descriptor);

} // namespace zembrastel::cli
