// A profile as a person who is to help needs to see it: the version, the settings without secrets, and what happened.
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
    std::string_view password = {};          // to be kept out, where it is known
    const ProfileStatus* status = nullptr;   // nullptr where the program does not watch
    std::optional<std::string> failure = {}; // of the last server check, in the server's own words
};

// Some lines of text. Wherever the password stands, there are dots.
[[nodiscard]] std::string supportDetails(const SupportFacts& facts);

} // namespace zembrastel
