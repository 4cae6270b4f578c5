// The options that give a profile's fields, the same for every command that takes them.
#pragma once

#include "cli/session/profile_options.h"

#include <CLI/CLI.hpp>
#include <vector>

namespace zembrastel::cli {

// They outlive the parser's run. Returns all of them.
std::vector<CLI::Option*> addProfileFields(CLI::App& command, ProfileOptions& options);

} // namespace zembrastel::cli
