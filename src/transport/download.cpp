#include "model/error.h"
#include "platform/child_process.h"
#include "platform/folder.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/local_replacement.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::chrono::seconds dateTolerance{1};

// A server file fetched to a temporary name in the folder where it is to be installed.
class FetchedFile : public StagedFile {
public:
    FetchedFile(
        const FTPTransport& transport, const std::string& path, std::optional<std::uint64_t> expectedSize,
        const Folder& into)
        : StagedFile(into) {
        if (transport.observer != nullptr) transport.observer->fileBegins(path, expectedSize);
        // curl writes to the file that was made, and gives it its date, whatever comes to stand under its name.
        transport.run(
            path, false, {{"output", ChildProcess::filePath}, {"remote-time"}}, descriptor(),
            [this](const ChildProcess&) { return std::optional(static_cast<std::uint64_t>(fingerprint().size)); });
    }
};

bool differs(RemoteDate a, RemoteDate b) {
    return std::abs((a - b).count()) >= std::chrono::duration<double>(dateTolerance).count();
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
            updateOlder(local.path, Fingerprint::of(*local.parent, *item), entry);
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
    if (!replaceKeeping(fetched, local, change.local, backup, profile.localFolder)) {
        throw SyncError(path + " changed while making its backup. The local copy was kept; check again.");
    }
    return fingerprint;
}

} // namespace zembrastel
