// Splits a command line into words and quotes words for one, by the rules of the POSIX shell.
//
// Pure functions; any thread. Only quotes have a meaning: no variables, wildcards, pipes or comments. GLib's functions
// would differ: g_shell_parse_argv drops what follows a "#", and g_shell_quote quotes plain words too.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel::cli {

// The words between blanks, tabs and line feeds. Single quotes keep all as it is, double quotes all but \" \\ \$ and
// \`, a backslash keeps the next character. Nullopt if a quote is not closed or a backslash comes last.
[[nodiscard]] std::optional<std::vector<std::string>> splitWords(std::string_view text);

// `word` in a form that a shell reads back unchanged: in single quotes if it needs them.
[[nodiscard]] std::string shellQuoted(std::string_view word);

} // namespace zembrastel::cli
