// push: one pass over a profile, for scripts that publish what they built.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addPush(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
