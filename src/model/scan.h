// The local folder of a profile as a map of its files.
//
// Blocks its thread for one walk of the folder; reads names and attributes, never contents. Runs on every poll.
#pragma once

#include "model/fingerprint.h"
#include "model/name_fault.h"
#include "model/private_items.h"
#include "model/profile.h"
#include "platform/folder.h"

#include <functional>
#include <string_view>
#include <vector>

namespace zembrastel {

struct ScanHooks {
    // Called every few entries. An exception from it ends the scan: for stopping.
    std::function<void()> checkpoint = [] {};
    // Called with each path that rules and selection would publish, but that cannot be saved or sent because of its
    // name or depth. It is left out with its contents.
    std::function<void(std::string_view path, NameFault fault)> unusableName = [](std::string_view, NameFault) {};
    // Items to leave out, folders with their contents, whatever their name in the local folder.
    std::vector<PrivateItem> privateItems{};
    // Called with each path of a private item that rules and selection would publish.
    std::function<void(std::string_view path, const PrivateItem& item)> keptPrivate = [](std::string_view,
                                                                                         const PrivateItem&) {};
    // Called with each excluded path; its contents are left out too.
    std::function<void(std::string_view path)> excluded = [](std::string_view) {};
    // Called with the local folder's mount before anything in it is read.
    std::function<void(const Mount& mount)> mounted = [](const Mount&) {};
};

// Every regular file that is not excluded and belongs to the sync selection, by relative path. Folders that are
// unchanged since `before`, an earlier scan, are shared with it. Links are never followed, not even one that replaces a
// folder during the walk. Throws SyncError, or std::filesystem::filesystem_error for an item that cannot be read; there
// is no partial result.
[[nodiscard]] FileMap scan(const Profile& profile, const ScanHooks& hooks = {}, const FileMap& before = {});

} // namespace zembrastel
