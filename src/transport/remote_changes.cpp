#include "model/scan.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <chrono>

namespace zembrastel {
namespace {

constexpr std::chrono::duration<double> precision{1.0};

class Comparison {
public:
    Comparison(
        const FTPTransport& used, const FileMap& scanned, const FileMap& synchronised, const RemoteDates& known,
        const std::set<std::string, std::less<>>& offeredBefore, const FTPTransport::Report& reportLine)
        : transport(used), local(scanned), baseline(synchronised), knownDates(known), unanswered(offeredBefore),
          report(reportLine) {}

    void walk(const std::string& path, int depth) {
        transport.control->check();
        checkFolderDepth(depth);
        report(path.empty() ? "Comparing the remote folder" : "Comparing " + path);
        const auto entries = transport.list(path, localItems(local, path));
        if (transport.observer != nullptr) transport.observer->folderListed(0); // which of them count, is seen below
        for (const auto& entry : entries) {
            const std::string relative = childPath(path, entry.name);
            if (transport.profile.exclusions.matchEntry(relative)) continue;
            if (!entry.directory) {
                compare(relative, entry);
            } else if (local.containsFolder(relative)) {
                walk(relative, depth + 1);
            }
        }
    }

    std::vector<RemoteChange> changes;

private:
    void compare(const std::string& path, const RemoteEntry& entry) {
        const auto* file = local.find(path);
        if (file == nullptr) return;
        if (transport.observer != nullptr) transport.observer->fileDone();
        const RemoteDate date = entry.modified ? *entry.modified : transport.modificationDate(path);
        const auto* found = knownDates.find(path);
        const auto known = found == nullptr ? std::nullopt : std::optional(*found);
        const bool isNewer = shouldOffer(date, *file, known);
        if (!isNewer && !(unanswered.contains(path) && isUnknownVersion(date, known))) return;
        const auto* synchronised = baseline.find(path);
        const bool isEdited = synchronised != nullptr && isOtherVersion(*file, *synchronised);
        changes.push_back({.path = path, .local = *file, .remoteDate = date, .bothChanged = isEdited || !isNewer});
    }

    const FTPTransport& transport;
    const FileMap& local;
    const FileMap& baseline;
    const RemoteDates& knownDates;
    const std::set<std::string, std::less<>>& unanswered;
    const FTPTransport::Report& report;
};

} // namespace

bool shouldOffer(RemoteDate remote, const Fingerprint& local, std::optional<RemoteDate> knownRemote) {
    if (sinceUnixEpoch(remote) <= std::chrono::duration<double>(local.modified) + precision) return false;
    return isUnknownVersion(remote, knownRemote);
}

bool isUnknownVersion(RemoteDate remote, std::optional<RemoteDate> knownRemote) {
    return !knownRemote || remote - *knownRemote > precision;
}

std::vector<RemoteChange> FTPTransport::newerRemoteFiles(
    const FileMap& baseline, const RemoteDates& knownDates, const Report& report,
    const std::set<std::string, std::less<>>& unanswered) const {
    const FileMap local =
        scan(profile, {.checkpoint = [this] { control->check(); }, .privateItems = privateItems}, baseline);
    if (local.empty()) {
        (void)list(""); // a server that cannot be reached is still to be told
        return {};
    }
    Comparison comparison(*this, local, baseline, knownDates, unanswered, report);
    comparison.walk("", 0);
    std::stable_sort(
        comparison.changes.begin(), comparison.changes.end(),
        [](const RemoteChange& a, const RemoteChange& b) { return compareNames(a.path, b.path) < 0; });
    return std::move(comparison.changes);
}

} // namespace zembrastel
