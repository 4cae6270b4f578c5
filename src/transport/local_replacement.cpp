#include "transport/local_replacement.h"

#include "platform/files.h"
#include "platform/uuid.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zembrastel {
namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t newFileMode = 0666; // less the umask, as any program's

// A place for the file under a new backup folder, which is made.
LocalPlace newBackupPlace(const std::string& localFolder, const std::string& path) {
    return LocalPlace::resolveMakingFolders(
        localFolder, std::string(backupFolder) + "/" + Uuid::random().text() + "/" + path);
}

// Puts what an exchange brought out under `name` back in its place, where `placed` stands since. The editing may go on:
// what comes out now can be a newer edit still, which has to go back in its turn. The place has the newest once there
// comes out what was put in before; that is then under `name`.
void putBack(const Folder& folder, const std::string& name, const std::string& place, ino_t placed) {
    for (auto out = folder.attributes(name); out && folder.exchange(name, place);) {
        const auto back = folder.attributes(name);
        if (!back || back->st_ino == placed) return;
        placed = std::exchange(out, back)->st_ino;
    }
}

// A file of this kind without a lock is a leftover. A check that comes between the making and the lock removes it: then
// there is another.
std::pair<std::string, Descriptor> makeLocked(const Folder& folder) {
    for (;;) {
        auto name = temporaryName();
        Descriptor file = folder.create(name, newFileMode);
        (void)::flock(file.get(), LOCK_EX); // waits for a check at most, which holds it for a moment
        // Asked by the name: some file systems count no links at all.
        if (folder.attributes(name)) return {std::move(name), std::move(file)};
    }
}

} // namespace

StagedFile::StagedFile(const Folder& into) : StagedFile(into, makeLocked(into)) {}

StagedFile::StagedFile(const Folder& into, std::pair<std::string, Descriptor> made)
    : folder(into), name(std::move(made.first)), file(std::move(made.second)) {}

StagedFile::~StagedFile() {
    if (!kept) folder.remove(name);
}

void StagedFile::settle(std::optional<mode_t> permissions) const {
    const auto item = folder.attributes(name);
    if (!item || item->st_ino != attributes().st_ino) throwFileError("open", folder.path() / name, ESTALE);
    if (permissions && ::fchmod(file.get(), *permissions & permissionBits) != 0) {
        throwFileError("chmod", folder.path() / name);
    }
    if (::fsync(file.get()) != 0) throwFileError("fsync", folder.path() / name);
}

struct stat StagedFile::attributes() const {
    struct stat found {};
    if (::fstat(file.get(), &found) != 0) throwFileError("stat", folder.path() / name);
    return found;
}

Fingerprint StagedFile::fingerprint() const { return Fingerprint::of(folder, attributes()); }

LocalPlace makeBackup(const std::string& localFolder, const LocalPlace& original, const TransferControl& control) {
    auto backup = newBackupPlace(localFolder, original.path);
    const Descriptor from = original.parent->openForReading(original.name);
    struct stat attributes {};
    if (::fstat(from.get(), &attributes) != 0) throwFileError("stat", original.url);
    const Descriptor to = backup.parent->create(backup.name, S_IRUSR | S_IWUSR);
    try {
        copyContents(from.get(), to.get(), backup.url, [&control] { control.check(); });
        const timespec times[] = {attributes.st_atim, attributes.st_mtim};
        if (::futimens(to.get(), times) != 0 || ::fchmod(to.get(), attributes.st_mode & permissionBits) != 0) {
            throwFileError("chmod", backup.url);
        }
        if (::fsync(to.get()) != 0) throwFileError("fsync", backup.url);
    } catch (...) {
        // Half a backup is none, and every attempt on a full disk would leave one more.
        backup.parent->remove(backup.name);
        throw;
    }
    return backup;
}

bool replaceKeeping(
    const StagedFile& staged, const LocalPlace& local, const Fingerprint& version, const LocalPlace& backup,
    const std::string& localFolder) {
    const Folder& folder = *local.parent;
    const auto current = local.attributes();
    if (!current || Fingerprint::of(folder, *current) != version) return false;
    staged.settle(current->st_mode);
    const auto inode = staged.attributes().st_ino;
    if (!folder.exchange(staged.name, local.name)) {
        folder.replace(staged.name, folder, local.name);
        return true;
    }
    const auto displaced = folder.attributes(staged.name);
    if (displaced && Fingerprint::of(folder, *displaced) == version) {
        try {
            folder.replace(staged.name, *backup.parent, backup.name);
        } catch (const std::filesystem::filesystem_error&) {
            // The backup folder may be on another file system; the copy in it is the backup then.
        }
        return true;
    }
    // An edit slipped in between the look and the exchange. Until it is back, the temporary name is the only one it
    // has.
    staged.keep();
    try {
        putBack(folder, staged.name, local.name, inode);
    } catch (const std::filesystem::filesystem_error& error) {
        // The place was cleared meanwhile, and stays so.
        if (error.code() != std::errc::no_such_file_or_directory) throw;
    }
    const auto leftover = newBackupPlace(localFolder, local.path);
    folder.replace(staged.name, *leftover.parent, leftover.name);
    return false;
}

} // namespace zembrastel
