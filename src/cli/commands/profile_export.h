// profile export: profiles without passwords, for another machine.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileExport(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
