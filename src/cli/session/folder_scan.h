// scan: what a profile covers locally, and what of it was not uploaded yet. No server is asked.
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
    std::vector<std::string> leftOut; // sentences: what cannot be published, of which the user was warned
};

// The profile's folder as it is now; an interrupt is thrown as Cancelled.
[[nodiscard]] ScannedFolder scanFolder(const Profile& profile, const Surroundings& around);

void addScan(CLI::App& parent, Command& chosen);

} // namespace zembrastel::cli
