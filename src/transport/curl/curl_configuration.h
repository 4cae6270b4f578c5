// The text of curl's configuration for one run, and paths on the server as curl reads them.
//
// Pure functions; any thread. All names from the user or a server reach curl and the server only through this text, so
// these functions prevent a name from becoming a command.
#pragma once

#include "model/profile.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

// One line of curl's configuration: the name of a long option and its value, if it has one.
struct TransferOption {
    std::string key;
    std::optional<std::string> value = std::nullopt;
};

// The common options, then `options`, one a line. Throws SyncError for a path that is not safe, for a null character,
// and for a line break in text that is sent to the server unchanged.
[[nodiscard]] std::string curlConfiguration(
    const Profile& profile, std::string_view password, std::string_view path, bool directory,
    const std::vector<TransferOption>& options);

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
