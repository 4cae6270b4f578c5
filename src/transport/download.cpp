#include "model/error.h"
#include "model/private_items.h"
#include "platform/child_process.h"
#include "platform/directory_walk.h"
#include "platform/folder.h"
#include "platform/text.h"
#include "transport/folder_loop.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/local_replacement.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <deque>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::chrono::seconds dateTolerance{1};

// What curl may write above the size that the server told: its own messages, and what a file grows by meanwhile.
constexpr std::uint64_t tolerance = std::uint64_t{64} << 10;

// A server file fetched to a temporary name in the folder where it is to be installed. Not to be installed before
// requireWhole().
class FetchedFile : public StagedFile {
public:
    // `toldSize` is that of the listing or of the file itself. A server that sends without end is stopped soon after
    // it.
    FetchedFile(
        const FTPTransport& server, const std::string& remotePath, std::optional<std::uint64_t> toldSize,
        const Folder& into)
        : StagedFile(into), transport(server), path(remotePath),
          expected(toldSize ? toldSize : server.size(remotePath)) {
        if (fetch()) return;
        // The file has grown since it was listed, or the listing is wrong: what the server says of the file itself
        // counts.
        expected = transport.size(path).value_or(*expected);
        if (!fetch()) refuse("more");
    }

    // Throws SyncError unless the file has the size that was told, or the one that the server tells now.
    void requireWhole() const {
        if (expected && size() != *expected && transport.size(path) != size()) refuse(std::to_string(size()));
    }

private:
    // False when the server sends more than was told.
    [[nodiscard]] bool fetch() const {
        if (transport.observer != nullptr) transport.observer->fileBegins(path, expected);
        const auto most =
            expected ? std::optional(std::min(*expected, UINT64_MAX - tolerance) + tolerance) : std::nullopt;
        try {
            // curl writes to the file that was made, and gives it its date, whatever comes to stand under its name.
            transport.run(
                path, false, {{"output", ChildProcess::filePath}, {"remote-time"}}, descriptor(),
                [this](const ChildProcess&) { return std::optional(size()); }, most);
        } catch (const SyncError&) {
            if (most && size() >= *most) return false;
            throw;
        }
        return true;
    }

    [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(fingerprint().size); }

    [[noreturn]] void refuse(const std::string& sent) const {
        throw SyncError(
            path + " was not downloaded: the server told a size of " + std::to_string(*expected) + " bytes and sent "
            + sent + ".");
    }

    const FTPTransport& transport;
    const std::string path;
    std::optional<std::uint64_t> expected;
};

bool differs(RemoteDate a, RemoteDate b) {
    return std::abs((a - b).count()) >= std::chrono::duration<double>(dateTolerance).count();
}

bool isThere(const LocalPlace& place, const Fingerprint& version) {
    const auto item = place.attributes();
    return item && Fingerprint::of(*place.parent, *item) == version;
}

// Is this what curl says of a file, or of its folder, that the server has no more?
bool isMissing(const SyncError& failure) {
    const std::string_view words = failure.what();
    return words.starts_with("curl: (78) ") || words.starts_with("curl: (9) ");
}

class TreeDownload {
public:
    TreeDownload(
        const FTPTransport& downloader, const FTPTransport::Report& reportLine,
        const FTPTransport::Installed& fileInstalled)
        : transport(downloader), profile(downloader.profile), report(reportLine), installed(fileInstalled),
          selection(
              profile.initialDownloadSelection ? profile.initialDownloadSelection : profile.effectiveSyncSelection()),
          privateItems(downloader.privateItems) {}

    void folder(const std::string& path, int depth) {
        transport.control->check();
        profile.validateDownloadSelection();
        checkFolderDepth(depth);
        ListedFolder listed{.path = path, .entries = transport.list(path, itemsIn(path))};
        if (leadsBack(listed, above, [this](const std::string& far) { return transport.listIfThere(far); })) {
            report("Left out, because on the server it leads back to a folder above it: " + printable(path));
            return;
        }
        if (!path.empty()) makeFolder(path);
        above.push_back(std::move(listed));
        contents(above.back(), depth);
        above.pop_back();
    }

private:
    // The local files and folders; links and other items are none of them.
    [[nodiscard]] std::vector<LocalItem> itemsIn(const std::string& path) const {
        std::vector<LocalItem> items;
        const auto place = LocalPlace::resolve(profile.localFolder, path);
        const auto folder = place.parent ? place.parent->enter(place.name) : std::nullopt;
        if (!folder) return items;
        visitItems(*folder, [&items](const WalkEntry& item) {
            const bool usable = item.kind == EntryKind::file || item.kind == EntryKind::folder;
            if (!usable || nameFault(item.name)) return;
            items.push_back({.name = std::string(item.name), .directory = item.kind == EntryKind::folder});
        });
        return items;
    }

    void makeFolder(const std::string& path) const {
        const auto place = LocalPlace::resolveMakingFolders(profile.localFolder, path);
        (void)place.parent->enterOrMake(place.name);
    }

    void contents(const ListedFolder& listed, int depth) {
        std::vector<const RemoteEntry*> wanted;
        for (const auto& entry : listed.entries) {
            if (isWanted(childPath(listed.path, entry.name), entry)) wanted.push_back(&entry);
        }
        if (transport.observer != nullptr) {
            const auto files = std::ranges::count(wanted, false, &RemoteEntry::directory);
            transport.observer->folderListed(static_cast<std::uint64_t>(files));
        }
        for (const auto* entry : wanted) {
            transport.control->check();
            const auto path = childPath(listed.path, entry->name);
            if (const auto fault = faultOf(*entry, depth)) {
                report(leftOutLine(*fault, path));
            } else {
                take(path, *entry, depth);
            }
            if (!entry->directory && transport.observer != nullptr) transport.observer->fileDone();
        }
    }

    // Of an entry of a folder at this depth.
    [[nodiscard]] static std::optional<NameFault> faultOf(const RemoteEntry& entry, int depth) {
        if (const auto fault = nameFault(entry.name)) return fault;
        return entry.directory && depth + 1 >= mostFolderLevels ? std::optional(NameFault::tooDeep) : std::nullopt;
    }

    [[nodiscard]] bool isWanted(const std::string& path, const RemoteEntry& entry) const {
        if (profile.exclusions.matchEntry(path)) return false;
        return !selection || (entry.directory ? selection->shouldVisit(path) : selection->includes(path));
    }

    void take(const std::string& path, const RemoteEntry& entry, int depth) {
        const auto local = LocalPlace::resolve(profile.localFolder, path);
        if (const auto* item = privateAt(local)) {
            report(leftOutText(path, *item));
        } else {
            entry.directory ? subfolder(local, depth) : file(local, entry);
        }
    }

    [[nodiscard]] const PrivateItem* privateAt(const LocalPlace& local) const {
        const auto item = local.attributes();
        return item ? privateItems.find(*item) : privateItems.findMissing(local.url);
    }

    void subfolder(const LocalPlace& local, int depth) {
        const auto item = local.attributes();
        if (item && !S_ISDIR(item->st_mode)) {
            keepDifferentType(local);
        } else {
            folder(local.path, depth + 1);
        }
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
        fetched.requireWhole();
        fetched.settleAsNew();
        const auto fingerprint = fetched.fingerprint();
        if (local.parent->install(fetched.name(), local.name)) {
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
    const PrivateItems privateItems;
    std::deque<ListedFolder> above; // those that hold the folder at hand
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
    if (!isThere(local, change.local)) {
        throw ChangedMeanwhile(path + " changed locally after the comparison. Review it again before replacing it.");
    }
    const auto [before, size] = [&] {
        try {
            return facts(path);
        } catch (const SyncError& error) {
            if (!isMissing(error)) throw;
            throw ChangedMeanwhile(
                path + " changed on the server after the comparison. Check again for the latest version.");
        }
    }();
    if (differs(before, change.remoteDate)) {
        throw ChangedMeanwhile(
            path + " changed on the server after the comparison. Check again for the latest version.");
    }
    const Folder folder = std::move(*local.parent);
    FetchedFile fetched(*this, path, size, folder);
    if (differs(modificationDate(path), before)) {
        throw ChangedMeanwhile(
            path + " changed on the server during the download. The local copy was kept; check again.");
    }
    fetched.requireWhole();
    control->check();
    local = LocalPlace::resolve(profile.localFolder, path);
    if (!isThere(local, change.local)) {
        throw ChangedMeanwhile(path + " was edited locally while downloading. The local edit was kept; check again.");
    }
    const auto backup = makeBackup(profile.localFolder, local, *control);
    control->check();
    const auto fingerprint = fetched.fingerprint();
    if (!replaceKeeping(fetched, local, change.local, backup, profile.localFolder)) {
        throw ChangedMeanwhile(path + " changed while making its backup. The local copy was kept; check again.");
    }
    return fingerprint;
}

} // namespace zembrastel
