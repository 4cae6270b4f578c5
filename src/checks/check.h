// One built-in check: a statement about the program, and the function that verifies it.
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
    std::string_view name;     // as the user reads it; points to a constant text
    std::function<void()> run; // throws the difference between the expected and the actual result
};

using Checks = std::vector<Check>;

// Fails the check with this text unless the condition holds.
void require(bool holds, const std::string& otherwise);

// Fails the check if the two differ, and names both; `what` says what was compared.
void requireEqual(std::string_view what, std::string_view seen, std::string_view expected);
void requireEqual(
    std::string_view what, const std::vector<std::string>& seen, const std::vector<std::string>& expected);

// Fails the check at the first path for which the question has another answer. `word` is the property, such as
// "excluded".
void requireForAll(
    std::initializer_list<std::string_view> paths, std::string_view word, bool answer,
    const std::function<bool(std::string_view path)>& question);

// The checks of each subject, in files of the same names.

struct TestServer;

// Without a server. Only temporary folders are used.
[[nodiscard]] Checks exclusionChecks();
[[nodiscard]] Checks selectionChecks();
[[nodiscard]] Checks stateChecks();
[[nodiscard]] Checks scanChecks(); // and which dates of the server count as newer

// With a server. This call works on the server already, and throws if it cannot be used.
[[nodiscard]] Checks reviewChecks(const TestServer& server);
[[nodiscard]] Checks browserChecks(const TestServer& server);

} // namespace zembrastel
