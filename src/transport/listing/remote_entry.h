// One item of a folder on the server, as a listing gives it.
#pragma once

#include "model/remote_date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

struct RemoteEntry {
    std::string name; // one path component that passed validName()
    bool directory = false;
    std::optional<RemoteDate> modified; // nothing when the listing gave no date
    bool localOnly = false;             // true only for what exists in the local folder alone

    // In bytes, as far as the listing tells. Two listings of one item need not agree: a download of another size is
    // compared with what the server says of the file itself.
    std::optional<std::uint64_t> size = std::nullopt;

    std::optional<unsigned> mode = std::nullopt; // permission bits, where the listing shows them (UNIX.mode)

    friend bool operator==(const RemoteEntry& a, const RemoteEntry& b) {
        return a.name == b.name && a.directory == b.directory && a.modified == b.modified && a.localOnly == b.localOnly;
    }
};

// The path of `name` in the folder `path`.
[[nodiscard]] std::string childPath(std::string_view path, std::string_view name);

} // namespace zembrastel
