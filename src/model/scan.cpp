#include "model/scan.h"

#include "model/error.h"
#include "platform/directory_walk.h"
#include "platform/files.h"
#include "platform/folder.h"
#include "platform/text.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace zembrastel {
namespace {

// Real path of the folder, once it is known to be one that can be listed and entered.
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

class Scan {
public:
    Scan(const Profile& scanned, const ScanHooks& scanHooks, const FileMap& before)
        : recorder(before), profile(scanned), hooks(scanHooks), selection(scanned.effectiveSyncSelection()) {}

    // Whether to enter the entry, should it be a folder.
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
        if (!isValidUtf8(entry.name)) {
            hooks.unusableName(entry.path);
            return false;
        }
        if (folder) return true;
        const struct stat attributes = entry.attributes();
        // It may have been replaced by something else since the folder was read.
        if (S_ISREG(attributes.st_mode)) recorder.add(entry.name, Fingerprint::of(attributes));
        return false;
    }

    FileMap::Recorder recorder;

private:
    const Profile& profile;
    const ScanHooks& hooks;
    const std::optional<DownloadSelection>& selection;
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
