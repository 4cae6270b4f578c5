// The output and the end of a push, whether this program does it or the running one.
//
// Main thread.
#pragma once

#include "cli/command.h"
#include "model/profile.h"
#include "transport/compare/remote_change.h"
#include "transport/failure.h"

#include <cstddef>
#include <string>
#include <vector>

namespace zembrastel::cli {

// Throws a CommandError if the profile has no contents to push, or, unless the download comes first, if its initial
// download is pending.
void requirePushable(const Profile& profile, bool downloadsFirst = false);

void printUploaded(const Profile& profile, const std::string& path, Output& output);

struct Pushed {
    std::size_t files = 0;        // sent
    std::size_t sameContents = 0; // not sent, since only their dates are new
    bool lacksFiles = false;      // files are missing on the server, which an error reports
};

// The summary at the end of a push without failure.
void printPushed(const Profile& profile, const Pushed& pushed, Output& output);

// "2 files stay missing on the server, …"
[[nodiscard]] std::string leftMissingText(std::size_t files);

// The error of an incomplete push. `consequence` is added to its end.
[[nodiscard]] CommandError pushFailure(
    const Profile& profile, const Failure& failure, const std::string& consequence = "");

// Files that are missing on the server are sent again only on request.
[[nodiscard]] CommandError missingFilesError(
    const Profile& profile, std::size_t missing, const std::vector<Profile>& profiles, const CommandContext& context);

// A script must not overwrite the work of another person: prints the files and ends the command.
struct PushProgress {
    bool comparedAll = false;
    bool sentSome = false;
};
[[noreturn]] void refuseBecauseOf(
    const std::vector<RemoteChange>& changes, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context, PushProgress reached = {});

} // namespace zembrastel::cli
