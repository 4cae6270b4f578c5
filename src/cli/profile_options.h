// The fields of a profile as options of the command line.
//
// Pure functions; any thread.
#pragma once

#include "model/profile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// The options as they were typed; what was not given is empty.
struct ProfileOptions {
    std::string name{};
    std::string host{};
    std::optional<std::int64_t> port{};
    std::string transport{};
    std::string username{};
    std::optional<std::string> remoteFolder{};
    std::string localFolder{};
    std::vector<std::string> exclude{};
    std::optional<std::string> exclusions{};
    std::vector<std::string> sync{};
    std::vector<std::string> noSync{};
    std::vector<std::string> download{};
    std::vector<std::string> noDownload{};
    std::string id{};
    bool enabled = false;
    bool needsDownload = false;
};

// The profile that the options describe, not validated. Throws CommandError (usage) for a combination without meaning.
[[nodiscard]] Profile profileFrom(const ProfileOptions& options);

} // namespace zembrastel
