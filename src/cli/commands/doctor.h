// doctor: look at a profile's server step by step, and say what is wrong and what to ask the hoster.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addDoctor(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
