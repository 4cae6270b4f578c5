#include "model/error.h"
#include "model/private_items.h"
#include "platform/folder.h"
#include "platform/text.h"
#include "transport/download/arrival.h"
#include "transport/download/remote_tree.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

// Reports lines in their order, and many files in a row that were kept as one line.
class DownloadReport {
public:
    explicit DownloadReport(const FTPTransport::Report& reportLine) : report(reportLine) {}

    void line(const std::string& text) {
        flush();
        report(text);
    }

    void kept(std::string text) {
        if (++keptFiles <= maxLines) texts.push_back(std::move(text));
    }

    void flush() {
        if (keptFiles > maxLines) {
            report("Kept " + std::to_string(keptFiles) + " local files with the same or newer date.");
        } else {
            for (const auto& text : texts) report(text);
        }
        texts.clear();
        keptFiles = 0;
    }

private:
    static constexpr std::size_t maxLines = 3;

    const FTPTransport::Report& report;
    std::vector<std::string> texts; // of the first kept files
    std::size_t keptFiles = 0;
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
            fetchQueued(); // the files before the failure
            report.flush();
            throw;
        }
        fetchQueued();
        report.flush();
    }

private:
    using Node = RemoteTree::Node;

    void folder(const Node& node) {
        const auto& path = node.listed.path;
        transport.control->check();
        if (node.failure) throw SyncError(*node.failure);
        if (node.leadsBack) {
            addLine("Left out, because on the server it leads back to a folder above it: " + printable(path));
            return;
        }
        if (!path.empty()) makeFolder(path);
        for (const auto& entry : node.listed.entries) {
            if (!isWanted(node, entry)) continue;
            transport.control->check();
            const auto below = childPath(path, entry.name);
            if (const auto fault = faultOf(entry, node.depth)) {
                addLine(leftOutLine(*fault, below), !entry.directory);
            } else {
                take(below, entry);
            }
        }
    }

    void take(const std::string& path, const RemoteEntry& entry) {
        const auto local = LocalPlace::resolve(profile.localFolder, path);
        if (const auto* item = privateAt(local)) {
            addLine(leftOutText(path, *item), !entry.directory);
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

    // Why an entry of a folder at this depth cannot be downloaded.
    [[nodiscard]] static std::optional<NameFault> faultOf(const RemoteEntry& entry, int depth) {
        if (const auto fault = nameFault(entry.name)) return fault;
        return entry.directory && depth + 1 >= maxFolderLevels ? std::optional(NameFault::tooDeep) : std::nullopt;
    }

    [[nodiscard]] bool isWanted(const Node& node, const RemoteEntry& entry) const {
        const auto path = childPath(node.listed.path, entry.name);
        if (profile.exclusions.matchEntry(path)) return false;
        return !selection || (entry.directory ? selection->shouldVisit(path) : selection->includes(path));
    }

    // A folder whose local counterpart is not a folder is not listed.
    [[nodiscard]] bool isEntered(const Node& node, const RemoteEntry& entry) const {
        if (faultOf(entry, node.depth)) return false;
        try {
            const auto item =
                LocalPlace::resolve(profile.localFolder, childPath(node.listed.path, entry.name)).attributes();
            return !item || S_ISDIR(item->st_mode);
        } catch (const SyncError&) {
            return false; // reported in the order of the tree
        }
    }

    // Requests the server's dates of files that exist locally too, if listings have no dates.
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
            return false; // reported in the order of the tree
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
        addLine("Kept local item with a different type: " + local.path, isFile);
    }

    void updateOlder(const std::string& path, const Fingerprint& local, const RemoteEntry& entry) {
        const RemoteDate date = entry.modified ? *entry.modified : dateOf(path);
        if (!shouldOffer(date, local, std::nullopt)) {
            addLine("Kept local file with the same or newer date: " + path, true, true);
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

    // Lines are reported in the order of the tree: a line after a file that is still queued waits for it.
    void addLine(std::string line, bool isFile = false, bool isKept = false) {
        lines.push_back({.after = queued.size(), .text = std::move(line), .isFile = isFile, .isKept = isKept});
        if (queued.empty()) reportUpTo(0);
    }

    void reportUpTo(std::size_t file) {
        for (; !lines.empty() && lines.front().after <= file; lines.pop_front()) {
            lines.front().isKept ? report.kept(std::move(lines.front().text)) : report.line(lines.front().text);
            if (lines.front().isFile) countFile();
        }
    }

    void countFile() const {
        if (transport.observer != nullptr) transport.observer->fileDone();
    }

    void queue(std::unique_ptr<Arrival> arrival, const RemoteEntry& entry) {
        constexpr std::uint64_t maxBytes = std::uint64_t{64} << 20;
        queued.push_back(std::move(arrival));
        bytes += std::min(entry.size.value_or(0), maxBytes);
        if (queued.size() == maxFetchedTogether || bytes >= maxBytes) fetchQueued();
    }

    void fetchQueued() {
        const auto arrivals = std::exchange(queued, {});
        bytes = 0;
        fetchAll(
            transport, arrivals,
            {.begins =
                 [&](std::size_t file) {
                     reportUpTo(file);
                     const auto& arrival = *arrivals[file];
                     report.line(
                         (arrival.replaces ? "Downloading newer server copy: " : "Downloading ") + arrival.path);
                 },
             .fetched =
                 [&](std::size_t file) {
                     putInPlace(*arrivals[file]);
                     countFile();
                 },
             .failed = [](std::size_t, const std::exception_ptr& why) { std::rethrow_exception(why); }});
        reportUpTo(arrivals.size());
    }

    void putInPlace(Arrival& arrival) {
        const auto& path = arrival.path;
        if (arrival.replaces) {
            installed(path, arrival.replace(transport));
            report.line("Updated older local file: " + path + " (previous local copy backed up)");
        } else if (const auto fingerprint = arrival.install()) {
            installed(path, *fingerprint);
        } else {
            report.line("Kept existing local file: " + path);
        }
    }

    struct Line {
        std::size_t after; // this number of queued files
        std::string text;
        bool isFile; // the line is about a file, which counts as done
        bool isKept; // many of these become one line
    };

    const FTPTransport& transport;
    const Profile& profile;
    DownloadReport report;
    const FTPTransport::Installed& installed;
    const std::optional<DownloadSelection> selection;
    const PrivateItems privateItems;
    RemoteTree tree{
        transport, [this](const Node& node, const RemoteEntry& entry) { return isWanted(node, entry); },
        [this](const Node& node, const RemoteEntry& entry) { return isEntered(node, entry); }};
    std::map<std::string, AnswerAboutFile> dates;
    std::vector<std::unique_ptr<Arrival>> queued;
    std::uint64_t bytes = 0; // of the queued files
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

} // namespace zembrastel
