// test: can the server be reached, and the remote folder be read?
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addTest(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
