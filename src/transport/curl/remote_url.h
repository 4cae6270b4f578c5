// How a path on the server is checked, and written for curl.
//
// Pure functions; any thread.
#pragma once

#include "model/profile.h"

#include <string>
#include <string_view>

namespace zembrastel {

// Is this one safe path component? Not empty, not "." or "..", without "/", line breaks and null characters.
[[nodiscard]] bool validName(std::string_view name);

// A value between double quotes, as a curl configuration reads it back unchanged. Throws SyncError on a null character,
// which such a text cannot hold.
[[nodiscard]] std::string quote(std::string_view value);

// The URL of `path`, relative to the profile's remote folder ("" is that folder itself). A folder's URL ends with "/":
// curl then lists instead of downloading. Two slashes after the port start at the server's root, one in the login
// folder. Throws SyncError, naming the path, when one of its components is not a valid name.
[[nodiscard]] std::string url(const Profile& profile, std::string_view path, bool directory);

} // namespace zembrastel
