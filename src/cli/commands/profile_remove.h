// profile remove: forgets a profile and its password; all files stay.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileRemove(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
