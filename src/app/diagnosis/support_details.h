// A profile for a person who helps: the version, the settings without secrets, and the last events.
//
// A pure function but for the name of the system; any thread.
#pragma once

#include "app/profile_status.h"
#include "model/profile.h"

#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

struct SupportFacts {
    std::string_view program; // its name and version
    const Profile& profile;
    std::string_view password = {};          // to be masked, if it is known
    const ProfileStatus* status = nullptr;   // nullptr if the program does not watch
    std::optional<std::string> failure = {}; // of the last server check, in the server's own words
};

// Some lines of text. The password is replaced by dots.
[[nodiscard]] std::string supportDetails(const SupportFacts& facts);

} // namespace zembrastel
