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

constexpr mode_t newFileMode = 0666; // less the umask, as any program's
constexpr mode_t ownFile = 0600;
constexpr mode_t ownFolder = 0700;

struct stat attributesOf(int file, const std::filesystem::path& name) {
    struct stat attributes {};
    if (::fstat(file, &attributes) != 0) throwFileError("stat", name);
    return attributes;
}

// A file of this kind without a lock is a leftover. A start that comes between the making and the lock removes it: then
// there is another.
std::pair<std::string, Descriptor> makeLocked(const Folder& folder) {
    for (;;) {
        auto name = temporaryName();
        Descriptor file = folder.create(name, ownFile);
        (void)::flock(file.get(), LOCK_EX); // waits for a start at most, which holds it for a moment
        // Asked by the name: some file systems count no links at all.
        if (folder.attributes(name)) return {std::move(name), std::move(file)};
    }
}

// What comes of newFileMode in this folder. One that is made tells: asking for the umask would change it for all
// threads, and a folder may have a default access-control list in its place.
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

// Half a backup is none, and every attempt on a full disk would leave one more.
void discardBackup(const std::string& localFolder, std::string path) {
    try {
        const auto file = LocalPlace::resolve(localFolder, path);
        if (file.parent) file.parent->remove(file.name);
        while ((path = path.substr(0, path.rfind('/'))) != backupFolder) {
            const auto folder = LocalPlace::resolve(localFolder, path);
            if (folder.parent) folder.parent->removeFolder(folder.name);
        }
    } catch (const SyncError&) {
        // A link stands on the way now; the failure before it is the one to report.
    } catch (const std::filesystem::filesystem_error&) {
        // It stays, and does no harm.
    }
}

// Makes a place for the file under a new backup folder and has it filled; when that fails nothing is left of it.
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

// False, with nothing done, where only a copy can be the backup.
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

// Puts what an exchange brought out under `name` back in its place, where `placed` stands since. The editing may go on:
// what comes out now can be a newer edit still, which has to go back in its turn. The place has the newest once there
// comes out what was put in before; that is then under `name`.
void putBack(const Folder& folder, const std::string& name, const std::string& place, ino_t placed) {
    try {
        for (auto out = folder.attributes(name); out && folder.exchange(name, place);) {
            const auto back = folder.attributes(name);
            if (!back || back->st_ino == placed) return;
            placed = std::exchange(out, back)->st_ino;
        }
    } catch (const std::filesystem::filesystem_error& error) {
        // The place was cleared meanwhile, and stays so.
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
    // Where all files have the same bits it has them already.
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
        if (!isVersion(local.attributes())) return false; // settling took its time
        folder.replace(staged.name(), folder, local.name);
        return true;
    }
    if (isVersion(folder.attributes(staged.name()))) {
        bool moved = false;
        try {
            moved = becomesBackup(folder, staged.name(), backup);
        } catch (const std::filesystem::filesystem_error&) {
            // The copy that was made before is the backup then.
        }
        if (!moved) folder.remove(staged.name());
        return true;
    }
    // An edit slipped in between the look and the exchange. Until it is back, the temporary name is the only one it
    // has.
    putBack(folder, staged.name(), local.name, attributesOf(staged.descriptor(), local.url).st_ino);
    moveToBackup(localFolder, folder, staged.name(), local.path);
    return false;
}

} // namespace zembrastel
