// restore: bring one kept version of a file back.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addRestore(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
