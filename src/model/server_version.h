// The identity of one version of a file on the server: its date and size.
#pragma once

#include "model/path_map.h"
#include "model/remote_date.h"

#include <cstdint>
#include <optional>

namespace zembrastel {

struct ServerVersion {
    RemoteDate modified;
    std::optional<std::uint64_t> size = std::nullopt; // in bytes; nullopt if the server reports no sizes

    friend bool operator==(const ServerVersion&, const ServerVersion&) = default;
};

// Relative path to the version that was last seen on the server.
using ServerVersions = PathMap<ServerVersion>;

} // namespace zembrastel
