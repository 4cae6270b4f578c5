// How a local file is replaced by another version of it so that nothing is lost: the new version is made under a
// temporary name beside it, the old one is backed up, and the two change places in one step.
//
// Blocks its thread on the disk alone. Failures are thrown as std::filesystem::filesystem_error, or as SyncError where
// a symbolic link stands in the way.
#pragma once

#include "model/fingerprint.h"
#include "platform/descriptor.h"
#include "platform/folder.h"
#include "transport/local_place.h"
#include "transport/transfer_control.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

namespace zembrastel {

// The folder in the local folder that holds the backups: each in a folder of its own, named by a fresh id, and there
// under the path that the file had.
inline constexpr std::string_view backupFolder = ".zembrastel-backups";

// A new, empty file under a temporary name in the folder where it is to be installed; removed unless it was moved on.
class StagedFile {
public:
    explicit StagedFile(const Folder& into);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    [[nodiscard]] int descriptor() const { return file.get(); }

    // Flushes the contents to the disk and, where given, sets the permission bits. Done before the file is installed:
    // a crash that left it short would otherwise have the short file uploaded as a local edit. Throws when something
    // else has come to stand under the temporary name.
    void settle(std::optional<mode_t> permissions) const;

    // Of what is in it now.
    [[nodiscard]] struct stat attributes() const;

    // Of what is in it now. Read before the file is installed: what stands in the place afterwards may be an edit.
    [[nodiscard]] Fingerprint fingerprint() const;

    // Leaves the file of that name where it is.
    void keep() const { kept = true; }

    const Folder& folder; // borrowed
    const std::string name;

private:
    StagedFile(const Folder& into, std::pair<std::string, Descriptor> made);

    const Descriptor file;
    mutable bool kept = false;
};

// Copies contents, permission bits and modification time of the file to a new backup place.
[[nodiscard]] LocalPlace makeBackup(
    const std::string& localFolder, const LocalPlace& original, const TransferControl& control);

// Puts the staged file in the place of the local version with this fingerprint. False, with the newest local edit in
// place, when that is no longer the version there. Whatever stood in the place for a moment goes to a backup and is
// never removed: a program may still have it open, and what it writes is then in the backup.
[[nodiscard]] bool replaceKeeping(
    const StagedFile& staged, const LocalPlace& local, const Fingerprint& version, const LocalPlace& backup,
    const std::string& localFolder);

} // namespace zembrastel
