// One item of a folder on the server, as a listing gives it.
#pragma once

#include "model/remote_date.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel {

struct RemoteEntry {
    std::string name; // one path component that passed validName()
    bool directory = false;
    std::optional<RemoteDate> modified; // nothing when the listing gave no date
    bool localOnly = false;             // true only for what exists in the local folder alone

    // In bytes, as far as the listing tells. Good for showing how far a download has come, and for nothing else: no
    // server is held to it, and two listings of one item need not agree.
    std::optional<std::uint64_t> size = std::nullopt;

    friend bool operator==(const RemoteEntry& a, const RemoteEntry& b) {
        return a.name == b.name && a.directory == b.directory && a.modified == b.modified && a.localOnly == b.localOnly;
    }
};

} // namespace zembrastel
