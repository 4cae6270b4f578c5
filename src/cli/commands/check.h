// check: what is newer on the server, beside a running program.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addCheck(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
