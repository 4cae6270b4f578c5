// ls: what a remote folder holds.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addLs(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
