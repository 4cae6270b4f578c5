// Finds out which of the files that no listing showed are missing on the server, and which are hidden there.
//
// A listing without a file is no proof: servers hide names that begin with a dot, and silently shorten long listings.
// So the server is asked about the files themselves, many with one login. Blocks its thread.
#pragma once

#include "model/server_version.h"
#include "transport/publish/publish_decision.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct FTPTransport;

// The server's answer about each file.
using Answers = std::map<std::string, RemoteFacts::Presence, std::less<>>;

// True if a component of this path begins with a dot.
[[nodiscard]] bool mayBeHidden(std::string_view path);

// The files that are missing according to these answers. If the listings were right about every ordinary name in the
// answers, they are trusted about the other ordinary names too.
[[nodiscard]] std::set<std::string, std::less<>> missingFiles(
    const std::vector<std::string>& unlisted, const Answers& answers);

// Asks the server about at most 200 ordinary and 200 hidden names. `listed` is a file that a listing showed: if the
// server denies it, its answers are not used and the result is empty. A file without a clear answer is not missing.
// Throws Cancelled and the system's errors; after a failure of the server, the remaining answers are missing.
[[nodiscard]] std::set<std::string, std::less<>> findMissing(
    const FTPTransport& transport, const std::vector<std::string>& unlisted, const std::optional<std::string>& listed);

// The versions of the files that the server has although no listing shows them. Asks about each name that may be
// hidden. Failures as above.
[[nodiscard]] ServerVersions findHidden(const FTPTransport& transport, const std::vector<std::string>& unlisted);

} // namespace zembrastel
