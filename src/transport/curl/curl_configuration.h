// The text of curl's configuration for one run.
//
// A pure function; any thread. All names from the user or a server reach curl and the server only through this text, so
// this function prevents a name from becoming a command.
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

} // namespace zembrastel
