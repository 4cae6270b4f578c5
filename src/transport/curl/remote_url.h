// Validates paths on the server and writes them for curl.
//
// Pure functions; any thread.
#pragma once

#include "model/profile.h"

#include <string>
#include <string_view>

namespace zembrastel {

// True for a safe path component: not empty, not "." or "..", without "/", line breaks and null characters.
[[nodiscard]] bool validName(std::string_view name);

// The value in double quotes, so that curl's configuration reads it back unchanged. Throws SyncError for a null
// character, which a configuration cannot contain.
[[nodiscard]] std::string quote(std::string_view value);

// The URL of `path`, relative to the profile's remote folder ("" is that folder itself). A folder's URL ends with "/":
// curl then lists instead of downloading. Two slashes after the port start at the server's root, one in the login
// folder. Throws SyncError with the path if one of its components is not a valid name.
[[nodiscard]] std::string url(const Profile& profile, std::string_view path, bool directory);

} // namespace zembrastel
