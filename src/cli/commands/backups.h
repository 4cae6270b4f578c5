// backups: which versions of replaced files are kept, and how much space they take.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addBackups(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
