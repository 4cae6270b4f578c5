// A recursive walk of a folder through directory descriptors, which never follows a link.
//
// Blocks its thread. Cost: one getdents64 pass for each folder, and one fstatat for each item whose attributes the
// visitor reads.
#pragma once

#include "platform/file_attributes.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <sys/stat.h>

namespace zembrastel {

class Folder;

enum class EntryKind { file, folder, link, other };

// One item. Valid during the visit only.
class WalkEntry {
public:
    WalkEntry(
        std::string_view relativePath, std::string_view itemName, EntryKind itemKind, int parentFolder,
        const std::filesystem::path& rootFolder)
        : path(relativePath), name(itemName), kind(itemKind), parent(parentFolder), root(rootFolder) {}

    std::string_view path; // relative to the root, "/" between components
    std::string_view name; // NUL-terminated
    EntryKind kind;

    // The attributes of the item itself, not of a link's target. Throws std::filesystem::filesystem_error, also if the
    // item no longer exists.
    [[nodiscard]] struct stat attributes() const;

    // Those of the folder's file system.
    [[nodiscard]] InodeNumbers inodeNumbers() const { return inodeNumbersAt(parent); }

private:
    int parent;
    const std::filesystem::path& root;
};

struct WalkHooks {
    // Called for every item below the root, in the order of its folder's listing. For a folder, returns whether to
    // enter it; for other items the result is ignored.
    std::function<bool(const WalkEntry&)> visit;
    // Called for each entered folder except the root, before and after the visits of its contents.
    std::function<void(std::string_view name)> enter = [](std::string_view) {};
    std::function<void()> leave = [] {};
};

// Walks everything below `root`: first all items of a folder, then its sub-folders in ascending order of names. Links
// are visited but not entered. An exception of a hook ends the walk, as does the first item that cannot be read
// (std::filesystem::filesystem_error; its code is ELOOP if a folder was swapped for a link during the walk).
//
// Uses at most 34 descriptors including the root's, however deep the tree.
void walkFolder(const Folder& root, const WalkHooks& hooks);

// The same for the items of one open folder, without entering any.
void visitItems(const Folder& folder, const std::function<void(const WalkEntry&)>& visit);

} // namespace zembrastel
