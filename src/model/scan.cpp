#include "model/scan.h"
#include "model/path_map_recorder.h"

#include "model/error.h"
#include "model/private_items.h"
#include "platform/directory_walk.h"
#include "platform/files.h"
#include "platform/folder.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace zembrastel {
namespace {

// The real path of the folder, after checking that it can be listed and entered.
std::filesystem::path readableRoot(const std::string& localFolder) {
    std::error_code failed;
    auto root = std::filesystem::canonical(localFolder, failed);
    const bool absent = failed == std::errc::no_such_file_or_directory || failed == std::errc::not_a_directory
                        || failed == std::errc::permission_denied;
    if (failed && !absent) throwFileError("realpath", localFolder, failed.value());
    if (absent || localFolder.find('\0') != std::string::npos || !std::filesystem::is_directory(root, failed)
        || ::faccessat(AT_FDCWD, root.c_str(), R_OK | X_OK, AT_EACCESS) != 0) {
        throw SyncError("The local folder is unavailable or unreadable.");
    }
    return root;
}

std::optional<NameFault> faultOf(const WalkEntry& entry) {
    if (const auto fault = nameFault(entry.name)) return fault;
    const bool tooDeep = entry.kind == EntryKind::folder && isTooDeep(entry.path);
    return tooDeep ? std::optional(NameFault::tooDeep) : std::nullopt;
}

class Scan {
public:
    Scan(const Profile& scanned, const ScanHooks& scanHooks, const FileMap& before)
        : recorder(before), profile(scanned), hooks(scanHooks), selection(scanned.effectiveSyncSelection()),
          privateItems(scanHooks.privateItems) {}

    // Whether to enter the entry, if it is a folder.
    bool visit(const WalkEntry& entry) {
        constexpr unsigned entriesBetweenChecks = 256;
        if (visited++ % entriesBetweenChecks == 0) hooks.checkpoint();
        if (entry.kind != EntryKind::folder && entry.kind != EntryKind::file) return false;
        // Parents were accepted on the way down.
        if (profile.exclusions.matchEntry(entry.path)) {
            hooks.excluded(entry.path);
            return false;
        }
        const bool folder = entry.kind == EntryKind::folder;
        if (selection && !(folder ? selection->shouldVisit(entry.path) : selection->includes(entry.path))) return false;
        if (const auto fault = faultOf(entry)) {
            hooks.unusableName(entry.path, *fault);
            return false;
        }
        if (folder)
            return !privateItems.mayBeFolder(entry.name) || !keptPrivate(entry, privateItems.find(entry.attributes()));
        const struct stat attributes = entry.attributes();
        // Another item may have replaced it since the folder was read.
        if (!S_ISREG(attributes.st_mode) || keptPrivate(entry, privateItems.find(attributes))) return false;
        recorder.add(entry.name, Fingerprint::of(numbersFor(entry, attributes), attributes));
        return false;
    }

    FileMap::Recorder recorder;

private:
    bool keptPrivate(const WalkEntry& entry, const PrivateItem* item) const {
        if (item != nullptr) hooks.keptPrivate(entry.path, *item);
        return item != nullptr;
    }

    // Queried once for consecutive files on the same device.
    InodeNumbers numbersFor(const WalkEntry& entry, const struct stat& attributes) {
        if (!numbers || attributes.st_dev != device) {
            numbers = entry.inodeNumbers();
            device = attributes.st_dev;
        }
        return *numbers;
    }

    const Profile& profile;
    const ScanHooks& hooks;
    const std::optional<DownloadSelection>& selection;
    const PrivateItems privateItems;
    std::optional<InodeNumbers> numbers;
    dev_t device = 0;
    unsigned visited = 0;
};

} // namespace

FileMap scan(const Profile& profile, const ScanHooks& hooks, const FileMap& before) {
    const auto root = readableRoot(profile.localFolder);
    Scan walk(profile, hooks, before);
    try {
        const Folder folder = Folder::open(root);
        hooks.mounted(folder.mount());
        walkFolder(
            folder, {.visit = [&walk](const WalkEntry& entry) { return walk.visit(entry); },
                     .enter = [&walk](std::string_view name) { walk.recorder.enter(name); },
                     .leave = [&walk] { walk.recorder.leave(); }});
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code().value() == ELOOP) {
            throw SyncError("A file moved outside the selected local folder while scanning.");
        }
        const bool ownShortage =
            error.code() == std::errc::too_many_files_open || error.code() == std::errc::too_many_files_open_in_system;
        if (error.path1() == root && !ownShortage) throw SyncError("Cannot read the local folder.");
        throw;
    }
    return walk.recorder.finish();
}

} // namespace zembrastel
