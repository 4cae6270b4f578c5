// What a profile is at, for a person and for programs.
#pragma once

#include "app/control/control_messages.h"
#include "cli/terminal/json_line.h"

#include <string>
#include <vector>

namespace zembrastel::cli {

// The members of a status that the "status" events of all commands share.
void addStatus(JsonLine& object, const ProfileStatus& status);

// "My website  Watching" and what there is to say about it, a line each.
[[nodiscard]] std::vector<std::string> statusLines(const answer::Status& told);

} // namespace zembrastel::cli
