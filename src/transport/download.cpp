#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/folder.h"
#include "platform/uuid.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::chrono::seconds dateTolerance{1};
constexpr mode_t permissionBits = 07777;
constexpr mode_t newFileMode = 0666; // less the umask, as any program's

// A server file fetched to a temporary name in the folder where it is to be installed; removed unless it was moved on.
class FetchedFile {
public:
    FetchedFile(
        const FTPTransport& transport, const std::string& path, std::optional<std::uint64_t> expectedSize,
        const Folder& into)
        : folder(into), name(temporaryName()), file(folder.create(name, newFileMode)) {
        (void)::flock(file.get(), LOCK_EX | LOCK_NB); // a file of this kind without a lock is a leftover
        if (transport.observer != nullptr) transport.observer->fileBegins(path, expectedSize);
        try {
            // curl writes to the file that was made, and gives it its date, whatever comes to stand under its name.
            transport.run(
                path, false, {{"output", ChildProcess::filePath}, {"remote-time"}}, file.get(),
                [this](const ChildProcess&) { return std::optional(static_cast<std::uint64_t>(fingerprint().size)); });
        } catch (...) {
            folder.remove(name);
            throw;
        }
    }
    FetchedFile(const FetchedFile&) = delete;
    FetchedFile& operator=(const FetchedFile&) = delete;
    ~FetchedFile() {
        if (!kept) folder.remove(name);
    }

    // Flushes the contents to the disk and, where given, sets the permission bits. Done before the file is installed:
    // a crash that left it short would otherwise have the short file uploaded as a local edit. Throws when something
    // else has come to stand under the temporary name.
    void settle(std::optional<mode_t> permissions) const {
        const auto item = folder.attributes(name);
        if (!item || item->st_ino != fingerprint().inode) throwFileError("open", folder.path() / name, ESTALE);
        if (permissions && ::fchmod(file.get(), *permissions & permissionBits) != 0) {
            throwFileError("chmod", folder.path() / name);
        }
        if (::fsync(file.get()) != 0) throwFileError("fsync", folder.path() / name);
    }

    // Of what was fetched. Read before the file is installed: what stands in the place afterwards may be an edit.
    [[nodiscard]] Fingerprint fingerprint() const {
        struct stat attributes {};
        if (::fstat(file.get(), &attributes) != 0) throwFileError("stat", folder.path() / name);
        return Fingerprint::of(attributes);
    }

    // Leaves the file of that name where it is.
    void keep() const { kept = true; }

    const Folder& folder;
    const std::string name;

private:
    const Descriptor file;
    mutable bool kept = false;
};

bool differs(RemoteDate a, RemoteDate b) {
    return std::abs((a - b).count()) >= std::chrono::duration<double>(dateTolerance).count();
}

// A place for the file under a new backup folder, which is made.
LocalPlace newBackupPlace(const std::string& localFolder, const std::string& path) {
    return LocalPlace::resolveMakingFolders(localFolder, ".zembrastel-backups/" + Uuid::random().text() + "/" + path);
}

// Copies contents, permission bits and modification time of the file to a new backup place.
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

// Puts the fetched file in the place of the local version with this fingerprint. False, with the newest local edit in
// place, when that is no longer the version there. Whatever stood in the place for a moment goes to a backup and is
// never removed: a program may still have it open, and what it writes is then in the backup.
bool install(
    const FetchedFile& fetched, const LocalPlace& local, const Fingerprint& version, const LocalPlace& backup,
    const std::string& localFolder) {
    const Folder& folder = *local.parent;
    const auto current = local.attributes();
    if (!current || Fingerprint::of(*current) != version) return false;
    fetched.settle(current->st_mode);
    const auto inode = static_cast<ino_t>(fetched.fingerprint().inode);
    if (!folder.exchange(fetched.name, local.name)) {
        folder.replace(fetched.name, folder, local.name);
        return true;
    }
    const auto displaced = folder.attributes(fetched.name);
    if (displaced && Fingerprint::of(*displaced) == version) {
        try {
            folder.replace(fetched.name, *backup.parent, backup.name);
        } catch (const std::filesystem::filesystem_error&) {
            // The backup folder may be on another file system; the copy in it is the backup then.
        }
        return true;
    }
    // An edit slipped in between the look and the exchange. Until it is back, the temporary name is the only one it
    // has.
    fetched.keep();
    try {
        putBack(folder, fetched.name, local.name, inode);
    } catch (const std::filesystem::filesystem_error& error) {
        // The place was cleared meanwhile, and stays so.
        if (error.code() != std::errc::no_such_file_or_directory) throw;
    }
    const auto leftover = newBackupPlace(localFolder, local.path);
    folder.replace(fetched.name, *leftover.parent, leftover.name);
    return false;
}

class TreeDownload {
public:
    TreeDownload(
        const FTPTransport& downloader, const FTPTransport::Report& reportLine,
        const FTPTransport::Installed& fileInstalled)
        : transport(downloader), profile(downloader.profile), report(reportLine), installed(fileInstalled),
          selection(
              profile.initialDownloadSelection ? profile.initialDownloadSelection : profile.effectiveSyncSelection()) {}

    void folder(const std::string& path, int depth) const {
        transport.control->check();
        profile.validateDownloadSelection();
        checkFolderDepth(depth);
        for (const auto& entry : wantedEntries(path)) {
            transport.control->check();
            const auto local = LocalPlace::resolve(profile.localFolder, childPath(path, entry.name));
            entry.directory ? subfolder(local, depth) : file(local, entry);
            if (!entry.directory && transport.observer != nullptr) transport.observer->fileDone();
        }
    }

private:
    [[nodiscard]] std::vector<RemoteEntry> wantedEntries(const std::string& path) const {
        auto entries = transport.list(path);
        std::erase_if(entries, [&](const RemoteEntry& entry) { return !isWanted(childPath(path, entry.name), entry); });
        if (transport.observer != nullptr) {
            const auto files = std::ranges::count(entries, false, &RemoteEntry::directory);
            transport.observer->folderListed(static_cast<std::uint64_t>(files));
        }
        return entries;
    }

    [[nodiscard]] bool isWanted(const std::string& path, const RemoteEntry& entry) const {
        if (profile.exclusions.matchEntry(path)) return false;
        return !selection || (entry.directory ? selection->shouldVisit(path) : selection->includes(path));
    }

    void subfolder(const LocalPlace& local, int depth) const {
        const auto item = local.attributes();
        if (item && !S_ISDIR(item->st_mode)) {
            keepDifferentType(local);
            return;
        }
        if (!item) {
            const auto made = LocalPlace::resolveMakingFolders(profile.localFolder, local.path);
            (void)made.parent->enterOrMake(made.name);
        }
        folder(local.path, depth + 1);
    }

    void file(const LocalPlace& local, const RemoteEntry& entry) const {
        const auto item = local.attributes();
        if (!item) {
            downloadMissing(local.path, entry.size);
        } else if (S_ISREG(item->st_mode)) {
            updateOlder(local.path, Fingerprint::of(*item), entry);
        } else {
            keepDifferentType(local);
        }
    }

    void keepDifferentType(const LocalPlace& local) const {
        report("Kept local item with a different type: " + local.path);
    }

    void downloadMissing(const std::string& path, std::optional<std::uint64_t> size) const {
        const auto local = LocalPlace::resolveMakingFolders(profile.localFolder, path);
        report("Downloading " + path);
        const FetchedFile fetched(transport, path, size, *local.parent);
        fetched.settle(std::nullopt);
        const auto fingerprint = fetched.fingerprint();
        if (local.parent->install(fetched.name, local.name)) {
            installed(path, fingerprint);
        } else {
            report("Kept existing local file: " + path);
        }
    }

    void updateOlder(const std::string& path, const Fingerprint& local, const RemoteEntry& entry) const {
        const RemoteDate date = entry.modified ? *entry.modified : transport.modificationDate(path);
        if (!shouldOffer(date, local, std::nullopt)) {
            report("Kept local file with the same or newer date: " + path);
            return;
        }
        report("Downloading newer server copy: " + path);
        installed(path, transport.replaceLocal({.path = path, .local = local, .remoteDate = date}));
        report("Updated older local file: " + path + " (previous local copy backed up)");
    }

    const FTPTransport& transport;
    const Profile& profile;
    const FTPTransport::Report& report;
    const FTPTransport::Installed& installed;
    const std::optional<DownloadSelection> selection;
};

} // namespace

std::filesystem::path FTPTransport::safeLocalURL(std::string_view path) const {
    return LocalPlace::resolve(profile.localFolder, path).url;
}

void FTPTransport::downloadTree(
    const std::string& path, int depth, const Report& report, const Installed& installed) const {
    TreeDownload(*this, report, installed).folder(path, depth);
}

Fingerprint FTPTransport::replaceLocal(const RemoteChange& change) const {
    const std::string& path = change.path;
    control->check();
    auto local = LocalPlace::resolve(profile.localFolder, path);
    if (local.fingerprint() != change.local) {
        throw SyncError(path + " changed locally after the comparison. Review it again before replacing it.");
    }
    const auto [before, size] = facts(path);
    if (differs(before, change.remoteDate)) {
        throw SyncError(path + " changed on the server after the comparison. Check again for the latest version.");
    }
    const Folder folder = std::move(*local.parent);
    const FetchedFile fetched(*this, path, size, folder);
    if (differs(modificationDate(path), before)) {
        throw SyncError(path + " changed on the server during the download. The local copy was kept; check again.");
    }
    control->check();
    local = LocalPlace::resolve(profile.localFolder, path);
    if (local.fingerprint() != change.local) {
        throw SyncError(path + " was edited locally while downloading. The local edit was kept; check again.");
    }
    const auto backup = makeBackup(profile.localFolder, local, *control);
    control->check();
    const auto fingerprint = fetched.fingerprint();
    if (!install(fetched, local, change.local, backup, profile.localFolder)) {
        throw SyncError(path + " changed while making its backup. The local copy was kept; check again.");
    }
    return fingerprint;
}

} // namespace zembrastel
