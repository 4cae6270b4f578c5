// Options as texts, taken exactly as they were typed.
#pragma once

#include <CLI/CLI.hpp>

namespace zembrastel::cli {

// Refuses an empty text, such as that of a shell variable that is not set.
[[nodiscard]] inline CLI::Validator notEmpty(const std::string& complaint = "must not be empty") {
    return {[complaint](const std::string& text) { return text.empty() ? complaint : std::string(); }, ""};
}

// Refuses what is no TCP port.
[[nodiscard]] CLI::Validator portNumber();

// A repeatable option that takes one text each time.
inline void takeOneEach(CLI::Option& option) { option.take_all()->expected(1, -1)->allow_extra_args(false); }

// The parser takes "[a,b]" for a list wherever more than one text may follow. File names may look like that, so such an
// argument is marked before parsing, and the mark taken away by every option.
[[nodiscard]] std::string markedBrackets(const std::string& argument);
[[nodiscard]] std::string unmarked(const std::string& argument);
void takeBracketsAsTyped(CLI::App& app);

} // namespace zembrastel::cli
