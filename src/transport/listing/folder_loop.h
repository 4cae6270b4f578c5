// Recognises a server folder that leads back to a folder above it, as a symbolic link can.
//
// Pure functions, except for the listing, which the caller provides; any thread.
#pragma once

#include "transport/listing/remote_entry.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

// A folder of a walk and its entries.
struct ListedFolder {
    std::string path;
    std::vector<RemoteEntry> entries;
};

// `below` followed by so many repetitions of the way from `above` to `below` that no real tree has such a path. `below`
// is below `above`.
[[nodiscard]] std::string repeatedFar(std::string_view above, std::string_view below);

// Returns nullopt if the server has no such folder.
using ListIfThere = std::function<std::optional<std::vector<RemoteEntry>>(const std::string& path)>;

// True if `folder` is the same as a folder above it: both have equal entries, and the way between them, repeated many
// times, still leads to such a folder. A few copies of a folder within itself are no loop. `list` is called only if a
// folder above has equal entries. `above` begins with the topmost folder.
[[nodiscard]] bool leadsBack(
    const ListedFolder& folder, std::span<const ListedFolder* const> above, const ListIfThere& list);

} // namespace zembrastel
