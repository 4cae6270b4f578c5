// Names that differ only in case or in Unicode normalization form: some servers treat them as one name.
//
// Pure functions; any thread. Identical names on both sides are never folded, so they cost little.
#pragma once

#include "model/fingerprint.h"
#include "transport/listing/remote_entry.h"

#include <cstddef>
#include <string>
#include <vector>

namespace zembrastel {

// An item of one local folder.
struct LocalItem {
    std::string name;
    bool directory = false;
};

// The items directly in this folder of the map.
[[nodiscard]] std::vector<LocalItem> localItems(const FileMap& files, std::string_view folder);

struct AlikeItems {
    std::size_t entry; // index of the server's
    std::string local; // name of the local one

    friend bool operator==(const AlikeItems&, const AlikeItems&) = default;
};

// Pairs of a server item and a local item of one kind whose names are alike, and of which neither name exists on the
// other side. Items with several counterparts are not paired: a side with both names distinguishes them.
[[nodiscard]] std::vector<AlikeItems> alikeItems(
    const std::vector<RemoteEntry>& entries, const std::vector<LocalItem>& local);

// A line for the user for each set of local items with alike names, from the folders with a path that is new or changed
// since `before`.
[[nodiscard]] std::vector<std::string> alikeNameLines(const FileMap& files, const FileMap& before);

} // namespace zembrastel
