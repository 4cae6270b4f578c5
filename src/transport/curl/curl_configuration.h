// What curl is told for one run, as the text of its configuration.
//
// A pure function; any thread. Everything that the user or a server has named reaches curl and the server through this
// text alone, so this is where a name is kept from becoming a command of its own.
#pragma once

#include "model/profile.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

// One line of curl's configuration: a long option's name and, where it takes one, its value.
struct TransferOption {
    std::string key;
    std::optional<std::string> value = std::nullopt;
};

// The options that every operation has, then `options`, one a line. Throws SyncError for a path that is not safe, for a
// null character, and for a line break in whatever is sent to the server as it stands.
[[nodiscard]] std::string curlConfiguration(
    const Profile& profile, std::string_view password, std::string_view path, bool directory,
    const std::vector<TransferOption>& options);

} // namespace zembrastel
