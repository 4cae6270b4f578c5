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

#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

namespace zembrastel {

// The folder in the local folder that holds the backups: each in a folder of its own, named by a fresh id, and there
// under the path that the file had. It and all folders in it are for the owner alone.
inline constexpr std::string_view backupFolder = ".zembrastel-backups";

// A new, empty file under a temporary name in the folder where it is to be installed; removed unless it was moved on.
// Nobody but the owner may read it before it is settled.
class StagedFile {
public:
    explicit StagedFile(const Folder& into);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    [[nodiscard]] int descriptor() const { return file.get(); }

    // Gives it what the open file `original` has beside its content (see copyAttributes), and flushes it to the disk.
    // Done before the file is installed: a crash that left it short would otherwise have the short file uploaded as a
    // local edit. Throws when something else has come to stand under the temporary name.
    void settleLike(int original) const;

    // The same with the permission bits that any program's new file gets here.
    void settleAsNew() const;

    // Of what is in it now.
    [[nodiscard]] struct stat attributes() const;

    // Of what is in it now. Read before the file is installed: what stands in the place afterwards may be an edit.
    [[nodiscard]] Fingerprint fingerprint() const;

    // Swaps it with the file of that name in one step. False, with nothing swapped, where the file system cannot. What
    // stood there is then under name(), which has become that of a displaced file, and is no longer removed: it may be
    // the only copy of an edit.
    [[nodiscard]] bool exchangeWith(const std::string& place);

    [[nodiscard]] const std::string& name() const { return temporary; }

private:
    StagedFile(const Folder& into, std::pair<std::string, Descriptor> made);

    void requireInPlace() const;
    void flush() const;

    const Folder& folder; // borrowed
    std::string temporary;
    const Descriptor file;
    bool exchanged = false;
};

// Copies the file, with its date and all that copyAttributes keeps, to a new backup place.
[[nodiscard]] LocalPlace makeBackup(
    const std::string& localFolder, const LocalPlace& original, const TransferControl& control);

// Puts the staged file in the place of the local version with this fingerprint. False, with the newest local edit in
// place, when that is no longer the version there. Whatever stood in the place for a moment goes to a backup and is
// never removed: a program may still have it open, and what it writes is then in the backup. One that has other names
// is copied: by those it would change in the backup as well.
[[nodiscard]] bool replaceKeeping(
    StagedFile& staged, const LocalPlace& local, const Fingerprint& version, const LocalPlace& backup,
    const std::string& localFolder);

// Moves the file to a new backup of `path`, or copies and removes it where it has other names or the backups are on
// another file system.
void moveToBackup(
    const std::string& localFolder, const Folder& folder, const std::string& name, const std::string& path);

} // namespace zembrastel
