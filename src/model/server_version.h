// One version of a file on the server, as far as the server tells it apart from others.
#pragma once

#include "model/path_map.h"
#include "model/remote_date.h"

#include <cstdint>
#include <optional>

namespace zembrastel {

struct ServerVersion {
    RemoteDate modified;
    std::optional<std::uint64_t> size = std::nullopt; // in bytes, where the server reports sizes

    friend bool operator==(const ServerVersion&, const ServerVersion&) = default;
};

// Relative path to the version that was last seen on the server.
using ServerVersions = PathMap<ServerVersion>;

} // namespace zembrastel
