// Compares local files with the server's by their bytes, many with one login.
//
// Blocks its thread. Changes nothing on either side; what is fetched goes to a private folder and is removed.
#pragma once

#include "model/fingerprint.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace zembrastel {

struct FTPTransport;

struct FileToCompare {
    std::string path; // relative
    Fingerprint fingerprint{};
};

// Those of the files that the server has with the same bytes. A file that changed here meanwhile, or that the server
// refuses, is not among them. Fetches all of the files. Throws SyncError when the server fails, and Cancelled.
[[nodiscard]] std::set<std::string, std::less<>> filesWithEqualContents(
    const FTPTransport& transport, const std::vector<FileToCompare>& files);

} // namespace zembrastel
