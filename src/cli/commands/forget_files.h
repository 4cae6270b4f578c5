// zembrastel-cli forget-files: the files of an emptied local folder no longer count as synchronised.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addForgetFiles(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
