// profile export: profiles without passwords, for another machine.
#pragma once

#include "cli/command.h"

namespace zembrastel {

void addProfileExport(CLI::App& parent, Command& chosen);

} // namespace zembrastel
