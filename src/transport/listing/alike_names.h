// Names that differ only in case or in Unicode normalization form: to some servers they are one name.
//
// Pure functions; any thread. Names that are on both sides as they are spelt cost a look each, and are never folded.
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

// The items that lie in this folder of the map itself.
[[nodiscard]] std::vector<LocalItem> localItems(const FileMap& files, std::string_view folder);

struct AlikeItems {
    std::size_t entry; // index of the server's
    std::string local; // name of the local one

    friend bool operator==(const AlikeItems&, const AlikeItems&) = default;
};

// The items of one kind of which the server's and the local one are alike, and neither is on the other side as it is
// spelt. Left out is what is alike to a second such item of either side: a side that has two tells them apart.
[[nodiscard]] std::vector<AlikeItems> alikeItems(
    const std::vector<RemoteEntry>& entries, const std::vector<LocalItem>& local);

// A line for the user for each set of local items that are alike, from the folders in which a path is new or changed
// since `before`.
[[nodiscard]] std::vector<std::string> alikeNameLines(const FileMap& files, const FileMap& before);

} // namespace zembrastel
