// Which profile the user means.
//
// Pure functions; any thread.
#pragma once

#include "model/profile.h"

#include <string>
#include <vector>

namespace zembrastel::cli {

// The profile of this id, in either case, or of this name. Throws CommandError with what there is to choose from when
// there is none, or several of the name.
[[nodiscard]] const Profile& chooseProfile(const std::vector<Profile>& profiles, const std::string& nameOrId);

// What names this profile among all of them and no other: its name, else its id.
[[nodiscard]] std::string unambiguousName(const std::vector<Profile>& profiles, const Profile& profile);

// "web@ftp.example.com:21", as the user knows the server.
[[nodiscard]] std::string serverName(const Profile& profile);

// "a", "b" and "c": the names, each between double quotes.
[[nodiscard]] std::string listedNames(const std::vector<Profile>& profiles);

} // namespace zembrastel::cli
