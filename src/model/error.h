// The exceptions of the core, and their texts.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace zembrastel {

// A failure whose message is shown to the user unchanged.
class SyncError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The work was stopped on request. It is no failure: it is never shown, and not caught as a SyncError.
class Cancelled : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "cancelled"; }
};

// The text that the user sees for any exception: the message of a SyncError; for a system error the file that it names,
// if any, and the system's text.
[[nodiscard]] std::string describe(const std::exception& error);

} // namespace zembrastel
