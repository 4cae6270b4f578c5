// Options as texts, taken exactly as they were typed.
#pragma once

#include <CLI/CLI.hpp>

namespace zembrastel {

// Refuses an empty text, such as that of a shell variable that is not set.
[[nodiscard]] inline CLI::Validator notEmpty() {
    return {
        [](const std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); }, ""};
}

// A repeatable option that takes one text each time.
inline void takeOneEach(CLI::Option& option) { option.take_all()->expected(1, -1)->allow_extra_args(false); }

// The parser takes "[a,b]" for a list wherever more than one text may follow. File names may look like that, so such an
// argument is marked before parsing, and the mark taken away by every option.
[[nodiscard]] std::string markedBrackets(const std::string& argument);
[[nodiscard]] std::string unmarked(const std::string& argument);
void takeBracketsAsTyped(CLI::App& app);

} // namespace zembrastel
