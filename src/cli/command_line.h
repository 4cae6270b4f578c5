// The program behind main(): the syntax of the command line, and the run of the command that it names.
#pragma once

#include "cli/exit_code.h"
#include "cli/terminal/interrupt.h"

namespace zembrastel::cli {

// Throws nothing: every failure is told on standard error and becomes an exit code.
[[nodiscard]] ExitCode runCommandLine(int argumentCount, char** arguments, Interrupt& interrupt);

} // namespace zembrastel::cli
