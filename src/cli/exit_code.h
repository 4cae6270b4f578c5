// How a command ends: the exit codes, and the error that carries one.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// The numbers are what scripts rely on.
enum class ExitCode {
    done = 0,
    failed = 1,
    usage = 2,
    reviewWaiting = 3, // newer server files wait for a decision
    stateInUse = 4,    // another running program holds the state folder
    refused = 5,       // the server refused the login
    notRunning = 6,    // no program runs on the state folder, or it has ended
    notAnswering = 7,  // the running program does not answer
    interrupted = 8    // by Ctrl-C or a signal, before the work was done
};

// Ends the command. The message is one sentence or more for the user.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode exitCode, const std::string& message) : std::runtime_error(message), code(exitCode) {}

    ExitCode code;
};

// Of a failed conversation with a server, by curl's words for it.
[[nodiscard]] inline ExitCode exitCodeOf(std::string_view failure) {
    return failure.starts_with("curl: (67) ") ? ExitCode::refused : ExitCode::failed;
}

} // namespace zembrastel::cli
