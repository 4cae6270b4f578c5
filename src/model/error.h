// The exceptions of the core, and their texts.
#pragma once

#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

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
[[nodiscard]] inline std::string describe(const std::exception& error) {
    // std::filesystem::filesystem_error puts "filesystem error:" and brackets around the same facts.
    if (const auto* file = dynamic_cast<const std::filesystem::filesystem_error*>(&error)) {
        return file->path1().empty() ? file->code().message() : file->path1().string() + ": " + file->code().message();
    }
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "Out of memory";
    return error.what();
}

} // namespace zembrastel
