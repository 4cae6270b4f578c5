// A recursive walk of a folder by directory descriptors, which can never leave it through a link.
//
// Blocks its thread. Cost: one getdents64 pass a folder, and no look at an item unless the visitor asks for it.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>
#include <sys/stat.h>

namespace zembrastel {

class Folder;

enum class EntryKind { file, folder, link, other };

// One item, valid during the visit only.
class WalkEntry {
public:
    WalkEntry(
        std::string_view relativePath, std::string_view itemName, EntryKind itemKind, int parentFolder,
        const std::filesystem::path& rootFolder)
        : path(relativePath), name(itemName), kind(itemKind), parent(parentFolder), root(rootFolder) {}

    std::string_view path; // relative to the root, "/" between components
    std::string_view name; // NUL-terminated
    EntryKind kind;

    // The item's own attributes. Throws std::filesystem::filesystem_error, also when the item has gone meanwhile.
    [[nodiscard]] struct stat attributes() const;

private:
    int parent;
    const std::filesystem::path& root;
};

// Calls `visit` for every item below `root`, a folder before what it holds, in no particular order. The visitor says
// whether to enter a folder; its answer for other items is not looked at. Links are visited and never entered. What
// the visitor throws ends the walk, as does the first item that cannot be read (std::filesystem::filesystem_error; its
// code is ELOOP when a folder was swapped for a link during the walk).
//
// Holds at most 34 descriptors, however deep the tree, the root's among them.
void walkFolder(const Folder& root, const std::function<bool(const WalkEntry&)>& visit);

// The same for what lies in an open folder itself; none of it is entered.
void visitItems(const Folder& folder, const std::function<void(const WalkEntry&)>& visit);

} // namespace zembrastel
