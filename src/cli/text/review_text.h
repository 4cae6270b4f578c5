// The result of a server check in words, and the commands that come next.
#pragma once

#include "app/app_model.h"
#include "cli/command.h"
#include "cli/terminal/json_line.h"
#include "cli/terminal/output.h"
#include "model/server_version.h"

#include <string>
#include <vector>

namespace zembrastel::cli {

// "index.html  server 2026-01-02 15:04:05, here 2026-01-01 10:00:00, changed on both sides"
[[nodiscard]] std::string describeChange(const RemoteChange& change);

// ", 0 bytes there and 5 here"; empty if the sizes are equal or not known.
[[nodiscard]] std::string describeSizes(const RemoteChange& change, const ServerVersions& seen);

// "3 files are missing on the server"
[[nodiscard]] std::string missingText(std::size_t files);

// Prints that with the paths, or a "missing" event for each. Prints nothing if no file is missing.
void printMissing(const Profile& profile, const PathSet& missing, Output& output);

// "To send them again: zembrastel-cli push --missing NAME"
[[nodiscard]] std::string sendMissingHint(
    const GlobalOptions& options, std::size_t files, const std::string& profileName);

// The command line that runs this command for this profile, with the global options of this run.
[[nodiscard]] std::string commandLine(
    const GlobalOptions& options, const char* command, const std::string& profileName);

// That of review.
[[nodiscard]] std::string reviewCommand(const GlobalOptions& options, const std::string& profileName);

// "4f2a91c0": names this list of files and of the server's versions. A list with another file or version has another
// name.
[[nodiscard]] std::string listId(const std::vector<RemoteChange>& changes);

// Adds the members of a "review" event, with the sizes of the files seen on the server.
void addReviewFields(
    JsonLine& object, const Profile& profile, const std::vector<RemoteChange>& changes, Clock& clock,
    const ServerVersions& seen = {});

} // namespace zembrastel::cli
