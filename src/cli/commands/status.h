// status: what the running program is at.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addStatusCommand(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
