// profile list: the saved profiles, one by one.
#pragma once

#include "cli/command.h"

namespace zembrastel {

void addProfileList(CLI::App& parent, Command& chosen);

} // namespace zembrastel
