// profile set: changes what the options name and keeps the rest.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileSet(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
