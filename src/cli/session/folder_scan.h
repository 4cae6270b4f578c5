// The files that a profile covers locally, and their differences from the last synchronised state. No server is asked.
#pragma once

#include "cli/command.h"
#include "model/fingerprint.h"
#include "model/profile.h"

#include <string>
#include <vector>

namespace zembrastel::cli {

// How the folder differs from the baseline, each in ascending order.
struct LocalDifferences {
    std::vector<std::string> added;
    std::vector<std::string> changed;
    std::vector<std::string> deleted;
};

[[nodiscard]] LocalDifferences differences(const FileMap& current, const FileMap& baseline);

struct ScannedFolder {
    FileMap files;
    std::vector<std::string> leftOut; // a sentence for each item that cannot be published; printed as warnings already
};

// Scans the profile's folder. An interrupt is thrown as Cancelled, a failure as CommandError.
[[nodiscard]] ScannedFolder scanFolder(const Profile& profile, const CommandContext& context);

} // namespace zembrastel::cli
