// The interface of every command: its context, its exit codes and its errors; and how a command line is run.
#pragma once

#include "cli/terminal/interrupt.h"
#include "cli/terminal/output.h"

#include <functional>
#include <stdexcept>
#include <string>

namespace zembrastel::cli {

// Scripts rely on the numbers.
enum class ExitCode {
    done = 0,
    failed = 1,
    usage = 2,
    reviewWaiting = 3, // newer server files, or files that are there already, wait for a decision
    stateInUse = 4,    // another running program holds the state folder
    refused = 5,       // the server refused the login
    notRunning = 6,    // no program runs on the state folder, or it has ended
    notAnswering = 7,  // the running program does not answer
    interrupted = 8,   // by Ctrl-C or a signal, before the work was done
    nothingToWatch = 9 // there is no profile, or none is enabled
};

// Ends the command. The message is one sentence or more for the user.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode exitCode, const std::string& message, std::string technical = {})
        : std::runtime_error(message), code(exitCode), details(std::move(technical)) {}

    ExitCode code;
    std::string details; // the words of curl or the server, in English; empty if there are none
};

// The options that every command has. An empty text stands for an option that was not given.
struct GlobalOptions {
    std::string program = "zembrastel-cli"; // as the user called it
    std::string stateFolder{};
    std::string passwordFile{};
    std::string passwordCommand{};
    bool json = false;
};

// Outlives the command.
struct CommandContext {
    const GlobalOptions& options;
    Output& output;
    Interrupt& interrupt;
};

// Runs the command of a command line. Throws nothing: prints every failure on standard error and returns its exit code.
[[nodiscard]] ExitCode runCommandLine(int argumentCount, char** arguments, Interrupt& interrupt);

// Runs to its end. Throws CommandError, or another exception that describe() puts into words.
using Command = std::function<ExitCode(const CommandContext&)>;

} // namespace zembrastel::cli
