// watch: keeps profiles published until it is interrupted.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addWatch(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
