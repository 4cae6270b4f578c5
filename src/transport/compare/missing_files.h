// Files that no listing showed: which of them are really not on the server, and which are hidden there.
//
// A listing that lacks a file is no proof: servers hide names that begin with a dot, and leave entries out of long
// listings without a word. So the server is asked about the files themselves, many with one login.
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

// What the server says of each file that it was asked about.
using Answers = std::map<std::string, RemoteFacts::Presence, std::less<>>;

// Does a component of this path begin with a dot?
[[nodiscard]] bool mayBeHidden(std::string_view path);

// The files that are not there, by these answers. Where the server was not asked about all of them, and its listings
// were right about each ordinary name that it was asked about, they are right about the other ordinary names too.
[[nodiscard]] std::set<std::string, std::less<>> missingFiles(
    const std::vector<std::string>& unlisted, const Answers& answers);

// Asks the server about at most 200 ordinary and 200 hidden names. `listed` is a file that a listing showed: a server
// that denies it is not believed, and nothing is missing then. What it does not answer clearly is not missing. Throws
// Cancelled and the system's errors; a failure of the server only leaves answers out.
[[nodiscard]] std::set<std::string, std::less<>> findMissing(
    const FTPTransport& transport, const std::vector<std::string>& unlisted, const std::optional<std::string>& listed);

// The versions of those files that the server has although no listing shows them. Asks about each name that may be
// hidden. Failures as above.
[[nodiscard]] ServerVersions findHidden(const FTPTransport& transport, const std::vector<std::string>& unlisted);

} // namespace zembrastel
