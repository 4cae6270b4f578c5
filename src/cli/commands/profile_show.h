// profile show: everything that is saved of one profile.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileShow(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
