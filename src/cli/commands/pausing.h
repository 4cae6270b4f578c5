// pause and resume: of profiles, in the running program, or in what is saved for the next one.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addPause(CLI::App& parent, Command& chosen);
void addResume(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
