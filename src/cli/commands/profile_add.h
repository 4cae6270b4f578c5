// profile add: one new profile, from options or from a JSON object.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileAdd(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
