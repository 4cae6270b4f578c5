// Recognises a folder of a server that leads back to a folder above it, as a symbolic link can.
//
// Pure but for the listing, which the caller does; any thread.
#pragma once

#include "transport/listing/remote_entry.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

// A folder of a walk and what it was listed with.
struct ListedFolder {
    std::string path;
    std::vector<RemoteEntry> entries;
};

// The path of the folder in which the way from `above` down to `below` is repeated as often as a real tree never is.
// `below` lies below `above`.
[[nodiscard]] std::string repeatedFar(std::string_view above, std::string_view below);

// Nothing where the server has no such folder.
using ListIfThere = std::function<std::optional<std::vector<RemoteEntry>>(const std::string& path)>;

// Is `folder` one of those above it once more? It is where it lists exactly as that one does, and where the same way
// down, repeated far beyond what people make, still leads to such a folder. One copy of a folder within itself, or a
// few, are no loop. `list` is called only for a folder that lists as one above it.
// Those above are in their order, the topmost first.
[[nodiscard]] bool leadsBack(
    const ListedFolder& folder, std::span<const ListedFolder* const> above, const ListIfThere& list);

} // namespace zembrastel
