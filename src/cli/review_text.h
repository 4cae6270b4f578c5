// A review, and how to go on with it, in words.
#pragma once

#include "app/app_model.h"
#include "cli/command.h"
#include "cli/json_line.h"

#include <string>
#include <vector>

namespace zembrastel {

// "index.html  server 2026-01-02 15:04:05, here 2026-01-01 10:00:00, changed on both sides"
[[nodiscard]] std::string describeChange(const RemoteChange& change);

// The command line that runs this command on this profile, with the global options of this run.
[[nodiscard]] std::string commandLine(
    const GlobalOptions& options, const char* command, const std::string& profileName);

// The one that reviews it.
[[nodiscard]] std::string reviewCommand(const GlobalOptions& options, const std::string& profileName);

// The "review" event; the caller finishes it.
void addReview(JsonLine& object, const Profile& profile, const std::vector<RemoteChange>& changes, Clock& clock);

} // namespace zembrastel
