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
    // Called every few entries; what it throws ends the scan. For stopping.
    std::function<void()> checkpoint = [] {};
    // Called with each path that cannot be saved or sent, because of its name or its depth, where rules and selection
    // would have it published. It is left out with all it holds.
    std::function<void(std::string_view path, NameFault fault)> unusableName = [](std::string_view, NameFault) {};
    // Left out, folders with all they hold, under whatever name they stand in the folder.
    std::vector<PrivateItem> privateItems{};
    // Called with each place of one of them where rules and selection would have it published.
    std::function<void(std::string_view path, const PrivateItem& item)> keptPrivate = [](std::string_view,
                                                                                         const PrivateItem&) {};
    // Called with each path that the exclusions leave out, with all it holds.
    std::function<void(std::string_view path)> excluded = [](std::string_view) {};
    // Called with what the folder is mounted on, before anything in it is looked at.
    std::function<void(const Mount& mount)> mounted = [](const Mount&) {};
};

// Every regular file that is not excluded and belongs to the sync selection, by relative path. Folders that are as they
// were in `before`, an earlier scan of the folder, are shared with it and cost no more than the look. Links are never
// followed, not even one that takes a folder's place during the walk. Throws SyncError, or the system's
// std::filesystem::filesystem_error for an item that cannot be read; there is no partial result.
[[nodiscard]] FileMap scan(const Profile& profile, const ScanHooks& hooks = {}, const FileMap& before = {});

} // namespace zembrastel
