// One item of a server folder, as listed.
#pragma once

#include "model/server_version.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

struct RemoteEntry {
    std::string name; // a path component that passed validName()
    bool directory = false;
    std::optional<RemoteDate> modified; // nullopt if the listing has no date
    bool localOnly = false;             // true only for an item that exists only in the local folder

    // In bytes; nullopt if the listing has no size. Two listings of one item may differ: a download of another size is
    // compared with the size that the server reports for the file itself.
    std::optional<std::uint64_t> size = std::nullopt;

    std::optional<unsigned> mode = std::nullopt; // permission bits, if the listing shows them (UNIX.mode)

    friend bool operator==(const RemoteEntry& a, const RemoteEntry& b) {
        return a.name == b.name && a.directory == b.directory && a.modified == b.modified && a.localOnly == b.localOnly;
    }
};

// The path of `name` in the folder `path`.
[[nodiscard]] std::string childPath(std::string_view path, std::string_view name);

} // namespace zembrastel
