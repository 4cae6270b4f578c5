// why: what includes or excludes a path.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addWhy(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
