// The program behind main(): parses the command line and runs the command.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

// Throws nothing: prints every failure on standard error and returns its exit code.
[[nodiscard]] ExitCode runCommandLine(int argumentCount, char** arguments, Interrupt& interrupt);

} // namespace zembrastel::cli
