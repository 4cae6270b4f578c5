// profile import: profiles out of other programs' files and out of exports.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addProfileImport(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
