// review: what is newer on the server, and the decision on it.
#pragma once

#include "cli/command.h"

namespace zembrastel::cli {

void addReviewCommand(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
