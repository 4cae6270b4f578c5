// Replaces a local file by another version of it without loss: the new version is written under a temporary name beside
// it, the old one is backed up, and the two are exchanged in one step.
//
// Blocks its thread on the disk only. Failures are thrown as std::filesystem::filesystem_error, or as SyncError if a
// symbolic link is on the way.
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

// The folder in the local folder that holds the backups: each in a folder of its own, named by a fresh id, under the
// path of the file. Only the owner can read it and the folders in it.
inline constexpr std::string_view backupFolder = ".zembrastel-backups";

// A new, empty file under a temporary name in the folder where it will be installed; removed unless it was installed.
// Only the owner can read it before it is settled.
class StagedFile {
public:
    explicit StagedFile(const Folder& into);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    [[nodiscard]] int descriptor() const { return file.get(); }

    // Gives it the attributes of the open file `original` (see copyAttributes), and flushes it to the disk. Call it
    // before the file is installed: after a crash, a short file would be uploaded as a local edit. Throws if another
    // file has the temporary name now.
    void settleLike(int original) const;

    // The same with the permission bits of a new file in this folder.
    void settleAsNew() const;

    // Of its present content. Read it before the file is installed: afterwards an edit may be in its place.
    [[nodiscard]] Fingerprint fingerprint() const;

    // Exchanges it with the file of that name in one step. The other file is then under name(), which is the name of a
    // displaced file now; it is not removed any more, since it may be the only copy of an edit. False, with nothing
    // exchanged, if the file system cannot.
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

// Copies the file, with its date and attributes (see copyAttributes), to a new backup.
[[nodiscard]] LocalPlace makeBackup(
    const std::string& localFolder, const LocalPlace& original, const TransferControl& control);

// Puts the staged file in the place of the local version with this fingerprint. False, with the newest local edit in
// place, if the local file is another version. Each displaced file goes to a backup and is never removed: if a program
// still has it open, its writes go to the backup. A file with several hard links is copied instead: a change through
// another link would change the backup too.
[[nodiscard]] bool replaceKeeping(
    StagedFile& staged, const LocalPlace& local, const Fingerprint& version, const LocalPlace& backup,
    const std::string& localFolder);

// Moves the file to a new backup of `path`. Copies and removes it instead if it has several hard links, or if the
// backups are on another file system.
void moveToBackup(
    const std::string& localFolder, const Folder& folder, const std::string& name, const std::string& path);

} // namespace zembrastel
