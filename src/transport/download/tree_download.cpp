#include "model/error.h"
#include "model/private_items.h"
#include "platform/directory_walk.h"
#include "platform/folder.h"
#include "platform/text.h"
#include "transport/download/fetching.h"
#include "transport/download/local_replacement.h"
#include "transport/ftp_transport.h"
#include "transport/listing/folder_loop.h"
#include "transport/listing/remote_queries.h"
#include "transport/local_place.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

bool isThere(const LocalPlace& place, const Fingerprint& version) {
    const auto item = place.attributes();
    return item && Fingerprint::of(*place.parent, *item) == version;
}

// A server file on its way into a local folder: into a place that is free, or into that of an older version.
class Arrival {
public:
    // A file that is missing locally.
    Arrival(const std::string& localFolder, const std::string& missing, std::optional<std::uint64_t> listedSize)
        : Arrival(LocalPlace::resolveMakingFolders(localFolder, missing), listedSize, std::nullopt) {}

    // Throws ChangedMeanwhile when the local file is not the one that was compared.
    Arrival(const std::string& localFolder, const RemoteChange& change)
        : Arrival(placeOf(localFolder, change), std::nullopt, change) {}

    [[nodiscard]] FileToFetch toFetch() const {
        return {
            .path = path,
            .into = staged,
            .size = size,
            .version = replaces ? std::optional(replaces->remoteDate) : std::nullopt};
    }

    // Nothing, with all as it was, when a file has appeared in the place.
    [[nodiscard]] std::optional<Fingerprint> install() const {
        staged.settleAsNew();
        const auto fingerprint = staged.fingerprint();
        return folder.install(staged.name(), name) ? std::optional(fingerprint) : std::nullopt;
    }

    // With the older version as a backup. Throws ChangedMeanwhile, with the local file as it was, when that changed.
    Fingerprint replace(const FTPTransport& transport) {
        const auto& [changed, version, date, both] = *replaces;
        const auto& localFolder = transport.profile.localFolder;
        transport.control->check();
        const auto local = LocalPlace::resolve(localFolder, path);
        if (!isThere(local, version)) {
            throw ChangedMeanwhile(
                path + " was edited locally while downloading. The local edit was kept; check again.");
        }
        const auto backup = makeBackup(localFolder, local, *transport.control);
        transport.control->check();
        const auto fingerprint = staged.fingerprint();
        if (!replaceKeeping(staged, local, version, backup, localFolder)) {
            throw ChangedMeanwhile(path + " changed while making its backup. The local copy was kept; check again.");
        }
        return fingerprint;
    }

    const std::string path;
    const std::optional<RemoteChange> replaces;

private:
    Arrival(LocalPlace place, std::optional<std::uint64_t> listedSize, std::optional<RemoteChange> change)
        : path(place.path), replaces(std::move(change)), name(place.name), folder(std::move(*place.parent)),
          size(listedSize) {}

    static LocalPlace placeOf(const std::string& localFolder, const RemoteChange& change) {
        auto place = LocalPlace::resolve(localFolder, change.path);
        if (isThere(place, change.local)) return place;
        throw ChangedMeanwhile(
            change.path + " changed locally after the comparison. Review it again before replacing it.");
    }

    const std::string name;
    const Folder folder;
    const std::optional<std::uint64_t> size;
    StagedFile staged{folder};
};

// Fetches the files with one login and deals with each as soon as it is there.
void fetchAll(
    const FTPTransport& transport, const std::vector<std::unique_ptr<Arrival>>& arrivals, const FetchEvents& events) {
    std::vector<FileToFetch> files;
    files.reserve(arrivals.size());
    for (const auto& arrival : arrivals) files.push_back(arrival->toFetch());
    fetch(transport, files, events);
}

// What the server has below a folder, listed before anything is downloaded.
class RemoteTree {
public:
    struct Node {
        ListedFolder listed{};
        const Node* above = nullptr;
        int depth = 0;
        bool leadsBack = false;
        std::optional<std::string> failure{}; // why it is not listed
    };

    // Which entries of a folder are to be gone through, and which of the folders among them are to be listed.
    using Choose = std::function<bool(const Node& folder, const RemoteEntry& entry)>;

    RemoteTree(const FTPTransport& used, Choose isWanted, Choose isEntered)
        : transport(used), wanted(std::move(isWanted)), entered(std::move(isEntered)) {}

    // All folders of one depth after another.
    const Node& list(const std::string& top, int depth) {
        FolderLister lister(transport);
        std::vector<std::string> level{top};
        nodes[top] = {.listed = {.path = top, .entries = {}}, .depth = depth};
        while (!level.empty()) {
            std::vector<std::string> below;
            lister.list(level, [&](std::size_t folder, ListedEntries listed) {
                transport.control->check();
                look(nodes.at(level[folder]), std::move(listed), below);
            });
            level = std::move(below);
        }
        return nodes.at(top);
    }

    // Nullptr for a folder that was not entered.
    [[nodiscard]] const Node* find(const std::string& path) const {
        const auto found = nodes.find(path);
        return found == nodes.end() ? nullptr : &found->second;
    }

private:
    void look(Node& node, ListedEntries listed, std::vector<std::string>& below) {
        const auto& path = node.listed.path;
        try {
            node.listed.entries = resultOf(std::move(listed));
            transport.nameAsLocal(path, node.listed.entries, itemsIn(path));
            node.leadsBack = leadsBack(
                node.listed, foldersAbove(node), [this](const std::string& far) { return transport.listIfThere(far); });
        } catch (const SyncError& error) {
            node.failure = error.what(); // what comes before it is downloaded all the same
        }
        if (node.failure || node.leadsBack) return;
        std::uint64_t files = 0;
        for (const auto& entry : node.listed.entries) {
            if (!wanted(node, entry)) continue;
            if (!entry.directory) ++files;
            if (!entry.directory || !entered(node, entry)) continue;
            auto child = childPath(path, entry.name);
            nodes[child] = {.listed = {.path = child, .entries = {}}, .above = &node, .depth = node.depth + 1};
            below.push_back(std::move(child));
        }
        if (transport.observer != nullptr) transport.observer->folderListed(files);
    }

    // The local files and folders; links and other items are none of them.
    [[nodiscard]] std::vector<LocalItem> itemsIn(const std::string& path) const {
        std::vector<LocalItem> items;
        const auto place = LocalPlace::resolve(transport.profile.localFolder, path);
        const auto folder = place.parent ? place.parent->enter(place.name) : std::nullopt;
        if (!folder) return items;
        visitItems(*folder, [&items](const WalkEntry& item) {
            const bool usable = item.kind == EntryKind::file || item.kind == EntryKind::folder;
            if (!usable || nameFault(item.name)) return;
            items.push_back({.name = std::string(item.name), .directory = item.kind == EntryKind::folder});
        });
        return items;
    }

    static std::vector<const ListedFolder*> foldersAbove(const Node& node) {
        std::vector<const ListedFolder*> above;
        for (const auto* each = node.above; each != nullptr; each = each->above) above.push_back(&each->listed);
        std::ranges::reverse(above);
        return above;
    }

    const FTPTransport& transport;
    const Choose wanted;
    const Choose entered;
    std::map<std::string, Node> nodes;
};

class TreeDownload {
public:
    TreeDownload(
        const FTPTransport& downloader, const FTPTransport::Report& reportLine,
        const FTPTransport::Installed& fileInstalled)
        : transport(downloader), profile(downloader.profile), report(reportLine), installed(fileInstalled),
          selection(
              profile.initialDownloadSelection ? profile.initialDownloadSelection : profile.effectiveSyncSelection()),
          privateItems(downloader.privateItems) {}

    void run(const std::string& path, int depth) {
        transport.control->check();
        profile.validateDownloadSelection();
        checkFolderDepth(depth);
        const auto& top = tree.list(path, depth);
        findDates(top);
        try {
            folder(top);
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception&) {
            fetchQueued(); // what comes before the failure
            throw;
        }
        fetchQueued();
    }

private:
    using Node = RemoteTree::Node;

    void folder(const Node& node) {
        const auto& path = node.listed.path;
        transport.control->check();
        if (node.failure) throw SyncError(*node.failure);
        if (node.leadsBack) {
            say("Left out, because on the server it leads back to a folder above it: " + printable(path));
            return;
        }
        if (!path.empty()) makeFolder(path);
        for (const auto& entry : node.listed.entries) {
            if (!isWanted(node, entry)) continue;
            transport.control->check();
            const auto below = childPath(path, entry.name);
            if (const auto fault = faultOf(entry, node.depth)) {
                say(leftOutLine(*fault, below), !entry.directory);
            } else {
                take(below, entry);
            }
        }
    }

    void take(const std::string& path, const RemoteEntry& entry) {
        const auto local = LocalPlace::resolve(profile.localFolder, path);
        if (const auto* item = privateAt(local)) {
            say(leftOutText(path, *item), !entry.directory);
        } else {
            entry.directory ? subfolder(local) : file(local, entry);
        }
    }

    [[nodiscard]] const PrivateItem* privateAt(const LocalPlace& local) const {
        const auto item = local.attributes();
        return item ? privateItems.find(*item) : privateItems.findMissing(local.url);
    }

    void makeFolder(const std::string& path) const {
        const auto place = LocalPlace::resolveMakingFolders(profile.localFolder, path);
        (void)place.parent->enterOrMake(place.name);
    }

    // Of an entry of a folder at this depth.
    [[nodiscard]] static std::optional<NameFault> faultOf(const RemoteEntry& entry, int depth) {
        if (const auto fault = nameFault(entry.name)) return fault;
        return entry.directory && depth + 1 >= mostFolderLevels ? std::optional(NameFault::tooDeep) : std::nullopt;
    }

    [[nodiscard]] bool isWanted(const Node& node, const RemoteEntry& entry) const {
        const auto path = childPath(node.listed.path, entry.name);
        if (profile.exclusions.matchEntry(path)) return false;
        return !selection || (entry.directory ? selection->shouldVisit(path) : selection->includes(path));
    }

    // A folder that stands where there is something else here is not listed.
    [[nodiscard]] bool isEntered(const Node& node, const RemoteEntry& entry) const {
        if (faultOf(entry, node.depth)) return false;
        try {
            const auto item =
                LocalPlace::resolve(profile.localFolder, childPath(node.listed.path, entry.name)).attributes();
            return !item || S_ISDIR(item->st_mode);
        } catch (const SyncError&) {
            return false; // told in its turn
        }
    }

    // The server's dates of files that are here too, where listings have none.
    void findDates(const Node& node) {
        std::vector<std::string> paths;
        collectUndated(node, paths);
        auto answers = askAboutFiles(transport, paths);
        for (std::size_t i = 0; i < paths.size(); ++i) dates.emplace(paths[i], std::move(answers[i]));
    }

    void collectUndated(const Node& node, std::vector<std::string>& paths) const {
        if (node.failure || node.leadsBack) return;
        for (const auto& entry : node.listed.entries) {
            if (!isWanted(node, entry) || faultOf(entry, node.depth)) continue;
            auto path = childPath(node.listed.path, entry.name);
            if (entry.directory) {
                if (const auto* child = tree.find(path)) collectUndated(*child, paths);
            } else if (!entry.modified && isHere(path)) {
                paths.push_back(std::move(path));
            }
        }
    }

    [[nodiscard]] bool isHere(const std::string& path) const {
        try {
            return LocalPlace::resolve(profile.localFolder, path).attributes().has_value();
        } catch (const SyncError&) {
            return false; // told in its turn
        }
    }

    void subfolder(const LocalPlace& local) {
        const auto item = local.attributes();
        const auto* node = tree.find(local.path);
        if (node == nullptr || (item && !S_ISDIR(item->st_mode))) {
            keepDifferentType(local, false);
        } else {
            folder(*node);
        }
    }

    void file(const LocalPlace& local, const RemoteEntry& entry) {
        const auto item = local.attributes();
        if (!item) {
            queue(std::make_unique<Arrival>(profile.localFolder, local.path, entry.size), entry);
        } else if (S_ISREG(item->st_mode)) {
            updateOlder(local.path, Fingerprint::of(*local.parent, *item), entry);
        } else {
            keepDifferentType(local, true);
        }
    }

    void keepDifferentType(const LocalPlace& local, bool isFile) {
        say("Kept local item with a different type: " + local.path, isFile);
    }

    void updateOlder(const std::string& path, const Fingerprint& local, const RemoteEntry& entry) {
        const RemoteDate date = entry.modified ? *entry.modified : dateOf(path);
        if (!shouldOffer(date, local, std::nullopt)) {
            say("Kept local file with the same or newer date: " + path, true);
            return;
        }
        const RemoteChange change{.path = path, .local = local, .remoteDate = date};
        queue(std::make_unique<Arrival>(profile.localFolder, change), entry);
    }

    [[nodiscard]] RemoteDate dateOf(const std::string& path) const {
        const auto found = dates.find(path);
        return found == dates.end() ? transport.modificationDate(path)
                                    : readFacts(resultOf(found->second), path).modified;
    }

    // Lines come in the order of the tree: one behind a file that is still to come waits for it.
    void say(std::string line, bool isFile = false) {
        lines.push_back({.after = queued.size(), .text = std::move(line), .isFile = isFile});
        if (queued.empty()) sayUpTo(0);
    }

    void sayUpTo(std::size_t file) {
        for (; !lines.empty() && lines.front().after <= file; lines.pop_front()) {
            report(lines.front().text);
            if (lines.front().isFile) countFile();
        }
    }

    void countFile() const {
        if (transport.observer != nullptr) transport.observer->fileDone();
    }

    void queue(std::unique_ptr<Arrival> arrival, const RemoteEntry& entry) {
        constexpr std::uint64_t mostBytes = std::uint64_t{64} << 20;
        queued.push_back(std::move(arrival));
        bytes += std::min(entry.size.value_or(0), mostBytes);
        if (queued.size() == mostFetchedTogether || bytes >= mostBytes) fetchQueued();
    }

    void fetchQueued() {
        const auto arrivals = std::exchange(queued, {});
        bytes = 0;
        fetchAll(
            transport, arrivals,
            {.begins =
                 [&](std::size_t file) {
                     sayUpTo(file);
                     const auto& arrival = *arrivals[file];
                     report((arrival.replaces ? "Downloading newer server copy: " : "Downloading ") + arrival.path);
                 },
             .fetched =
                 [&](std::size_t file) {
                     put(*arrivals[file]);
                     countFile();
                 },
             .failed = [](std::size_t, const std::exception_ptr& why) { std::rethrow_exception(why); }});
        sayUpTo(arrivals.size());
    }

    void put(Arrival& arrival) const {
        const auto& path = arrival.path;
        if (arrival.replaces) {
            installed(path, arrival.replace(transport));
            report("Updated older local file: " + path + " (previous local copy backed up)");
        } else if (const auto fingerprint = arrival.install()) {
            installed(path, *fingerprint);
        } else {
            report("Kept existing local file: " + path);
        }
    }

    struct Line {
        std::size_t after; // so many queued files
        std::string text;
        bool isFile; // which is dealt with by it
    };

    const FTPTransport& transport;
    const Profile& profile;
    const FTPTransport::Report& report;
    const FTPTransport::Installed& installed;
    const std::optional<DownloadSelection> selection;
    const PrivateItems privateItems;
    RemoteTree tree{
        transport, [this](const Node& node, const RemoteEntry& entry) { return isWanted(node, entry); },
        [this](const Node& node, const RemoteEntry& entry) { return isEntered(node, entry); }};
    std::map<std::string, AnswerAboutFile> dates;
    std::vector<std::unique_ptr<Arrival>> queued;
    std::uint64_t bytes = 0; // of those queued
    std::deque<Line> lines;
};

} // namespace

std::filesystem::path FTPTransport::safeLocalURL(std::string_view path) const {
    return LocalPlace::resolve(profile.localFolder, path).url;
}

void FTPTransport::downloadTree(
    const std::string& path, int depth, const Report& report, const Installed& installed) const {
    TreeDownload(*this, report, installed).run(path, depth);
}

void FTPTransport::replaceLocal(const std::vector<RemoteChange>& changes, const ReplaceEvents& events) const {
    for (std::size_t done = 0; done < changes.size();) {
        std::vector<std::unique_ptr<Arrival>> arrivals;
        std::vector<const RemoteChange*> chosen;
        for (; done < changes.size() && arrivals.size() < mostFetchedTogether; ++done) {
            control->check();
            try {
                arrivals.push_back(std::make_unique<Arrival>(profile.localFolder, changes[done]));
                chosen.push_back(&changes[done]);
            } catch (const ChangedMeanwhile& refusal) {
                events.refused(changes[done], refusal);
            }
        }
        const auto refusing = [&](std::size_t file, const auto& work) {
            try {
                work();
            } catch (const ChangedMeanwhile& refusal) {
                events.refused(*chosen[file], refusal);
            }
        };
        fetchAll(
            *this, arrivals,
            {.begins = [](std::size_t) {},
             .fetched =
                 [&](std::size_t file) {
                     refusing(file, [&] { events.replaced(*chosen[file], arrivals[file]->replace(*this)); });
                 },
             .failed = [&](std::size_t file,
                           const std::exception_ptr& why) { refusing(file, [&] { std::rethrow_exception(why); }); }});
    }
}

Fingerprint FTPTransport::replaceLocal(const RemoteChange& change) const {
    Fingerprint installed;
    replaceLocal(
        {change}, {.replaced = [&](const RemoteChange&, const Fingerprint& fingerprint) { installed = fingerprint; },
                   .refused = [](const RemoteChange&, const ChangedMeanwhile& refusal) { throw refusal; }});
    return installed;
}

} // namespace zembrastel
