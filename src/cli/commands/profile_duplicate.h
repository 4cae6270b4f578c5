// profile duplicate: a copy under another name, not enabled.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileDuplicate(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
