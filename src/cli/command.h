// What every command is given and gives back.
//
// Each command has a file pair of its own with one function, which adds its part of the syntax to the parser. When the
// user chose the command, parsing puts what is to run into `chosen`.
#pragma once

#include "cli/exit_code.h"
#include "cli/terminal/interrupt.h"
#include "cli/terminal/output.h"

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace zembrastel::cli {

// Those of the user's that belong to no command. An empty text stands for an option that was not given.
struct GlobalOptions {
    std::string program = "zembrastel-cli"; // as the user called it
    std::string stateFolder{};
    std::string passwordFile{};
    std::string passwordCommand{};
    bool json = false;
};

// Outlives the command.
struct Surroundings {
    const GlobalOptions& options;
    Output& output;
    Interrupt& interrupt;
};

// Runs to its end. Throws CommandError, or anything else that describe() has words for.
using Command = std::function<ExitCode(const Surroundings&)>;

} // namespace zembrastel::cli
