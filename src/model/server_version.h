// The identity of one version of a file on the server: its modification date and its size.
//
// Dates are stored like in the saved state, in seconds since 2001-01-01 00:00:00 UTC, so that a date that was read is
// written back bit for bit; counting from 1970 would round its last binary digit away.
#pragma once

#include "model/path_map.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace zembrastel {

// The clock of the time points below: their epoch is 2001-01-01 00:00:00 UTC.
struct ReferenceEpoch {
    using rep = double;
    using period = std::ratio<1>;
    using duration = std::chrono::duration<double>;
    using time_point = std::chrono::time_point<ReferenceEpoch>;
};

using RemoteDate = ReferenceEpoch::time_point;

// Relative path to the server's date of that file.
using RemoteDates = PathMap<RemoteDate>;

// 1970-01-01 to 2001-01-01.
inline constexpr std::chrono::duration<double> referenceEpochSince1970{978307200};

[[nodiscard]] inline RemoteDate toRemoteDate(std::chrono::sys_seconds instant) {
    return RemoteDate(std::chrono::duration<double>(instant.time_since_epoch()) - referenceEpochSince1970);
}

// Seconds since 1970-01-01 00:00:00 UTC, comparable with Fingerprint::modified.
[[nodiscard]] inline std::chrono::duration<double> sinceUnixEpoch(RemoteDate date) {
    return date.time_since_epoch() + referenceEpochSince1970;
}

// Two versions with the same date and size cannot be distinguished.
struct ServerVersion {
    RemoteDate modified;
    std::optional<std::uint64_t> size = std::nullopt; // in bytes; nullopt if the server reports no sizes

    friend bool operator==(const ServerVersion&, const ServerVersion&) = default;
};

// Relative path to the version that was last seen on the server.
using ServerVersions = PathMap<ServerVersion>;

} // namespace zembrastel
