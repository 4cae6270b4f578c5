// How much room a text takes on a terminal, and what is left of it where there is less.
//
// Pure functions; any thread. Columns are counted as terminals do: two for a wide East Asian character or an emoji,
// none for an accent that joins the letter before it. The text is valid UTF-8 without control characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zembrastel::cli {

[[nodiscard]] std::size_t columnsOf(std::string_view text);

// The text in at most so many columns, with "…" in its middle in place of what is too much. No character is torn.
[[nodiscard]] std::string elidedInMiddle(std::string_view text, std::size_t columns);

} // namespace zembrastel::cli
