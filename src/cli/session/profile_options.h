// The fields of a profile as options of the command line.
//
// Pure functions; any thread.
#pragma once

#include "model/profile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel::cli {

// The options as they were typed; what was not given is empty.
struct ProfileOptions {
    std::optional<std::string> name{};
    std::optional<std::string> host{};
    std::optional<std::int64_t> port{};
    std::optional<std::string> transport{};
    std::optional<std::string> username{};
    std::optional<std::string> remoteFolder{};
    std::optional<std::string> localFolder{};
    std::vector<std::string> exclude{};
    std::optional<std::string> exclusions{};
    std::vector<std::string> sync{};
    std::vector<std::string> noSync{};
    std::vector<std::string> download{};
    std::vector<std::string> noDownload{};
    std::string id{};
    bool enabled = false;
    bool disabled = false;
    bool needsDownload = false;
};

// The profile that the options describe, not validated. Throws CommandError (usage) for a combination without meaning.
[[nodiscard]] Profile profileFrom(const ProfileOptions& options);

// The profile with what the options give in place of its own. A new transport has its own usual port unless the
// profile's is an unusual one. Errors as above.
[[nodiscard]] Profile changedProfile(Profile profile, const ProfileOptions& options);

} // namespace zembrastel::cli
