// profile list: the saved profiles, one by one.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileList(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
