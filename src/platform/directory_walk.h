// A recursive walk of a folder by directory descriptors, which can never leave it through a link.
//
// Blocks its thread. Cost: one getdents64 pass a folder, and no look at an item unless the visitor asks for it.
#pragma once

#include "platform/inode_numbers.h"

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

    // Of the file system that the item's folder is on.
    [[nodiscard]] InodeNumbers inodeNumbers() const { return inodeNumbersAt(parent); }

private:
    int parent;
    const std::filesystem::path& root;
};

struct WalkHooks {
    // Called for every item below the root, in the order in which its folder lists it; says whether to enter a folder,
    // for which it was called before. Its answer for other items is not looked at.
    std::function<bool(const WalkEntry&)> visit;
    // Called for each folder but the root, around the visits of all it holds.
    std::function<void(std::string_view name)> enter = [](std::string_view) {};
    std::function<void()> leave = [] {};
};

// Walks all that is below `root`: the items of a folder one after another, then its folders in ascending order of their
// names. Links are visited and never entered. What a hook throws ends the walk, as does the first item that cannot be
// read (std::filesystem::filesystem_error; its code is ELOOP when a folder was swapped for a link during the walk).
//
// Holds at most 34 descriptors, however deep the tree, the root's among them.
void walkFolder(const Folder& root, const WalkHooks& hooks);

// The same for what lies in an open folder itself; none of it is entered.
void visitItems(const Folder& folder, const std::function<void(const WalkEntry&)>& visit);

} // namespace zembrastel
