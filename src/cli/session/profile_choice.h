// The profile and the path that the user names.
//
// Pure functions; any thread.
#pragma once

#include "model/profile.h"

#include <string>
#include <string_view>
#include <vector>

namespace zembrastel::cli {

// The profile of this id, in either case, or of this name. Throws CommandError with the possible choices if there is
// none, or if several have the name.
[[nodiscard]] const Profile& chooseProfile(const std::vector<Profile>& profiles, const std::string& nameOrId);

// The profiles of these names or ids, each once.
[[nodiscard]] std::vector<Profile> chooseProfiles(
    const std::vector<Profile>& profiles, const std::vector<std::string>& namesOrIds);

// The text that names this profile and no other: its name, else its id.
[[nodiscard]] std::string unambiguousName(const std::vector<Profile>& profiles, const Profile& profile);

// "web@ftp.example.com:21"
[[nodiscard]] std::string serverName(const Profile& profile);

// "a", "b" and "c": the names, each in double quotes.
[[nodiscard]] std::string listedNames(const std::vector<Profile>& profiles);

// A typed path in the form that the program uses, without "." components and without slashes at the ends or in a row:
// "", "." and "/" are the root, "". Keeps "..", so that the caller can refuse it.
[[nodiscard]] std::string relativePath(std::string_view typed);

// A typed path, which may be absolute, as a path below the profile's local folder; "" is that folder itself. Throws
// CommandError if the path is not below it.
[[nodiscard]] std::string pathInProfile(const Profile& profile, const std::string& typed);

} // namespace zembrastel::cli
