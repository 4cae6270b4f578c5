// One built-in check: a sentence that must hold of the program, and the function that finds out.
//
// Values and pure functions; any thread.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct Check {
    std::string_view name;     // as the user reads it; of a text that stays
    std::function<void()> run; // returns when it holds, and throws what was seen in place of what was expected
};

using Checks = std::vector<Check>;

// Ends the check with this text as its failure when the condition does not hold.
void require(bool holds, const std::string& otherwise);

// Ends the check when the two differ, naming both; `what` is what was looked at.
void requireEqual(std::string_view what, std::string_view seen, std::string_view expected);
void requireEqual(
    std::string_view what, const std::vector<std::string>& seen, const std::vector<std::string>& expected);

// Ends the check at the first path for which the question has the other answer; `word` is what a path is that has it,
// such as "excluded".
void requireForAll(
    std::initializer_list<std::string_view> paths, std::string_view word, bool answer,
    const std::function<bool(std::string_view path)>& question);

} // namespace zembrastel
