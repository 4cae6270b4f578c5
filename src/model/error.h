// What can go wrong, and the one place that puts it into words.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace zembrastel {

// A failure whose message is the sentence that the user reads, shown as it stands.
class SyncError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The work was stopped on request. Not a failure: it is never shown, and never caught as a SyncError.
class Cancelled : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "cancelled"; }
};

// The text that a user sees for any exception: a SyncError's own sentence; for the system's errors the file they are
// about, where they name one, and the system's words.
[[nodiscard]] std::string describe(const std::exception& error);

} // namespace zembrastel
