// A path that the user typed, as one of a profile's.
#pragma once

#include "model/profile.h"

#include <string>

namespace zembrastel::cli {

// Below the local folder, from a path that may start at the root of the file system; "" is that folder itself. Throws
// CommandError for a path that is not below it.
[[nodiscard]] std::string pathInProfile(const Profile& profile, const std::string& typed);

} // namespace zembrastel::cli
