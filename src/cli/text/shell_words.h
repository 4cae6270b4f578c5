// A command line as words, and words as a command line, in the way of the POSIX shell.
//
// Pure functions; any thread. Quotation is all that is understood: no variables, wildcards, pipes or comments.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel::cli {

// The words between blanks, tabs and line feeds. Single quotes keep all as it is, double quotes all but \" \\ \$ and
// \`, a backslash keeps the next character. Nothing when a quotation is not closed or a backslash comes last.
[[nodiscard]] std::optional<std::vector<std::string>> splitWords(std::string_view text);

// `word` as a shell reads it back unchanged: between single quotes where it needs them.
[[nodiscard]] std::string shellQuoted(std::string_view word);

} // namespace zembrastel::cli
