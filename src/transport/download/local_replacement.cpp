#include "transport/download/local_replacement.h"

#include "model/error.h"
#include "platform/file_attributes.h"
#include "platform/files.h"
#include "platform/uuid.h"

#include <cerrno>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

constexpr mode_t newFileMode = 0666; // less the umask
constexpr mode_t ownFile = 0600;
constexpr mode_t ownFolder = 0700;

struct stat attributesOf(int file, const std::filesystem::path& name) {
    struct stat attributes {};
    if (::fstat(file, &attributes) != 0) throwFileError("stat", name);
    return attributes;
}

// A start of the program removes such files if they have no lock. If that happens between the creation and the lock,
// another file is created.
std::pair<std::string, Descriptor> makeLocked(const Folder& folder) {
    for (;;) {
        auto name = temporaryName();
        Descriptor file = folder.create(name, ownFile);
        (void)::flock(file.get(), LOCK_EX); // a start holds it only for a moment
        // Checked by name: some file systems do not count links.
        if (folder.attributes(name)) return {std::move(name), std::move(file)};
    }
}

// The mode that newFileMode results in, found by creating a file: reading the umask would change it for all threads,
// and the folder may have a default access-control list.
mode_t modeOfNewFiles(const Folder& folder) {
    const std::string name = temporaryName();
    const Descriptor file = folder.create(name, newFileMode);
    folder.remove(name);
    return attributesOf(file.get(), folder.path() / name).st_mode & 0777U;
}

void copyFile(int from, const LocalPlace& to, const std::function<void()>& checkpoint) {
    const auto original = attributesOf(from, to.url);
    const Descriptor copy = to.parent->create(to.name, ownFile);
    copyContents(from, copy.get(), to.url, checkpoint);
    copyAttributes(from, copy.get(), to.url);
    const timespec times[] = {original.st_atim, original.st_mtim};
    if (::futimens(copy.get(), times) != 0) throwFileError("utimens", to.url);
    if (::fsync(copy.get()) != 0) throwFileError("fsync", to.url);
}

// Removes an incomplete backup: otherwise each attempt on a full disk would leave one.
void discardBackup(const std::string& localFolder, std::string path) {
    try {
        const auto file = LocalPlace::resolve(localFolder, path);
        if (file.parent) file.parent->remove(file.name);
        while ((path = path.substr(0, path.rfind('/'))) != backupFolder) {
            const auto folder = LocalPlace::resolve(localFolder, path);
            if (folder.parent) folder.parent->removeFolder(folder.name);
        }
    } catch (const SyncError&) {
        // A link is on the way now; the earlier failure is reported.
    } catch (const std::filesystem::filesystem_error&) {
        // It stays, which does no harm.
    }
}

// Makes a place for the file in a new backup folder and calls `fill` with it. Removes both if that fails.
template <class Fill>
LocalPlace makeBackupBy(const Fill& fill, const std::string& localFolder, const std::string& path) {
    const std::string backupPath = std::string(backupFolder) + "/" + Uuid::random().text() + "/" + path;
    try {
        auto backup = LocalPlace::resolveMakingFolders(localFolder, backupPath, ownFolder);
        fill(backup);
        return backup;
    } catch (...) {
        discardBackup(localFolder, backupPath);
        throw;
    }
}

// Moves the file to the backup. False, with nothing done, if the backup must be a copy.
bool becomesBackup(const Folder& folder, const std::string& name, const LocalPlace& backup) {
    const auto item = folder.attributes(name);
    if (item && item->st_nlink > 1) return false;
    try {
        folder.replace(name, *backup.parent, backup.name);
        return true;
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code() == std::errc::cross_device_link) return false;
        throw;
    }
}

// Swaps the displaced file `name` back to its place, where our file `placed` is now. If the user saves meanwhile, the
// swap yields a newer version; repeat until our own file comes out, which is then under `name`.
void putBack(const Folder& folder, const std::string& name, const std::string& place, ino_t placed) {
    try {
        for (auto out = folder.attributes(name); out && folder.exchange(name, place);) {
            const auto back = folder.attributes(name);
            if (!back || back->st_ino == placed) return;
            placed = std::exchange(out, back)->st_ino;
        }
    } catch (const std::filesystem::filesystem_error& error) {
        // The user removed the file meanwhile.
        if (error.code() != std::errc::no_such_file_or_directory) throw;
    }
}

} // namespace

StagedFile::StagedFile(const Folder& into) : StagedFile(into, makeLocked(into)) {}

StagedFile::StagedFile(const Folder& into, std::pair<std::string, Descriptor> made)
    : folder(into), temporary(std::move(made.first)), file(std::move(made.second)) {}

StagedFile::~StagedFile() {
    if (!exchanged) folder.remove(temporary);
}

void StagedFile::settleLike(int original) const {
    requireInPlace();
    copyAttributes(original, file.get(), folder.path() / temporary);
    flush();
}

void StagedFile::settleAsNew() const {
    requireInPlace();
    const mode_t mode = modeOfNewFiles(folder);
    // On a file system where all files have the same bits, it has them already.
    if (::fchmod(file.get(), mode) != 0 && errno != EPERM) throwFileError("chmod", folder.path() / temporary);
    flush();
}

void StagedFile::requireInPlace() const {
    const auto item = folder.attributes(temporary);
    if (!item || item->st_ino != attributesOf(file.get(), folder.path() / temporary).st_ino) {
        throwFileError("open", folder.path() / temporary, ESTALE);
    }
}

void StagedFile::flush() const {
    if (::fsync(file.get()) != 0) throwFileError("fsync", folder.path() / temporary);
}

bool StagedFile::exchangeWith(const std::string& place) {
    std::string displaced = temporaryName(displacedSuffix);
    folder.replace(temporary, folder, displaced);
    temporary = std::move(displaced);
    exchanged = folder.exchange(temporary, place);
    return exchanged;
}

Fingerprint StagedFile::fingerprint() const {
    return Fingerprint::of(folder, attributesOf(file.get(), folder.path() / temporary));
}

LocalPlace makeBackup(const std::string& localFolder, const LocalPlace& original, const TransferControl& control) {
    const Descriptor from = original.parent->openForReading(original.name);
    return makeBackupBy(
        [&](const LocalPlace& backup) { copyFile(from.get(), backup, [&control] { control.check(); }); }, localFolder,
        original.path);
}

void moveToBackup(
    const std::string& localFolder, const Folder& folder, const std::string& name, const std::string& path) {
    (void)makeBackupBy(
        [&](const LocalPlace& backup) {
            if (becomesBackup(folder, name, backup)) return;
            copyFile(folder.openForReading(name).get(), backup, [] {});
            folder.remove(name);
        },
        localFolder, path);
}

bool replaceKeeping(
    StagedFile& staged, const LocalPlace& local, const Fingerprint& version, const LocalPlace& backup,
    const std::string& localFolder) {
    const Folder& folder = *local.parent;
    const auto isVersion = [&](const std::optional<struct stat>& item) {
        return item && Fingerprint::of(folder, *item) == version;
    };
    if (!isVersion(local.attributes())) return false;
    staged.settleLike(folder.openForReading(local.name).get());
    if (!staged.exchangeWith(local.name)) {
        if (!isVersion(local.attributes())) return false; // the file may have changed meanwhile
        folder.replace(staged.name(), folder, local.name);
        return true;
    }
    if (isVersion(folder.attributes(staged.name()))) {
        bool moved = false;
        try {
            moved = becomesBackup(folder, staged.name(), backup);
        } catch (const std::filesystem::filesystem_error&) {
            // The copy made before is the backup.
        }
        if (!moved) folder.remove(staged.name());
        return true;
    }
    // The user saved between the check and the exchange. Until the edit is back, it has only the temporary name.
    putBack(folder, staged.name(), local.name, attributesOf(staged.descriptor(), local.url).st_ino);
    moveToBackup(localFolder, folder, staged.name(), local.path);
    return false;
}

} // namespace zembrastel
