#include "model/scan.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/leftovers.h"

#include <algorithm>
#include <chrono>

namespace zembrastel {
namespace {

constexpr std::chrono::duration<double> precision{1.0};

class Comparison {
public:
    Comparison(
        const FTPTransport& used, const FileMap& scanned, const FileMap& synchronised, const RemoteDates& known,
        const FTPTransport::Report& reportLine)
        : transport(used), local(scanned), baseline(synchronised), knownDates(known), report(reportLine) {}

    void walk(const std::string& path, int depth) {
        transport.control->check();
        checkFolderDepth(depth);
        report(path.empty() ? "Comparing the remote folder" : "Comparing " + path);
        const auto entries = transport.list(path);
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
        const auto* known = knownDates.find(path);
        if (!shouldOffer(date, *file, known == nullptr ? std::nullopt : std::optional(*known))) return;
        const auto* synchronised = baseline.find(path);
        changes.push_back(
            {.path = path,
             .local = *file,
             .remoteDate = date,
             .bothChanged = synchronised != nullptr && isOtherVersion(*file, *synchronised)});
    }

    const FTPTransport& transport;
    const FileMap& local;
    const FileMap& baseline;
    const RemoteDates& knownDates;
    const FTPTransport::Report& report;
};

} // namespace

bool shouldOffer(RemoteDate remote, const Fingerprint& local, std::optional<RemoteDate> knownRemote) {
    if (sinceUnixEpoch(remote) <= std::chrono::duration<double>(local.modified) + precision) return false;
    return !knownRemote || remote - *knownRemote > precision;
}

std::vector<RemoteChange> FTPTransport::newerRemoteFiles(
    const FileMap& baseline, const RemoteDates& knownDates, const Report& report) const {
    std::vector<std::string> leftovers;
    const auto noteLeftover = [&leftovers](std::string_view path) {
        if (isTemporaryPath(path)) leftovers.emplace_back(path);
    };
    const FileMap local = scan(
        profile, {.checkpoint = [this] { control->check(); }, .privateItems = privateItems, .excluded = noteLeftover},
        baseline);
    for (const auto& path : leftovers) clearLeftover(profile, path);
    if (local.empty()) {
        (void)list(""); // a server that cannot be reached is still to be told
        return {};
    }
    Comparison comparison(*this, local, baseline, knownDates, report);
    comparison.walk("", 0);
    std::stable_sort(
        comparison.changes.begin(), comparison.changes.end(),
        [](const RemoteChange& a, const RemoteChange& b) { return compareNames(a.path, b.path) < 0; });
    return std::move(comparison.changes);
}

} // namespace zembrastel
