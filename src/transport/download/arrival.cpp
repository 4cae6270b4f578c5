#include "transport/download/arrival.h"

#include <utility>

namespace zembrastel {
namespace {

bool isThere(const LocalPlace& place, const Fingerprint& version) {
    const auto item = place.attributes();
    return item && Fingerprint::of(*place.parent, *item) == version;
}

LocalPlace placeOf(const std::string& localFolder, const RemoteChange& change) {
    auto place = LocalPlace::resolve(localFolder, change.path);
    if (isThere(place, change.local)) return place;
    throw ChangedMeanwhile(change.path + " changed locally after the comparison. Review it again before replacing it.");
}

} // namespace

Arrival::Arrival(const std::string& localFolder, const std::string& missing, std::optional<std::uint64_t> listedSize)
    : Arrival(LocalPlace::resolveMakingFolders(localFolder, missing), listedSize, std::nullopt) {}

Arrival::Arrival(const std::string& localFolder, const RemoteChange& change)
    : Arrival(placeOf(localFolder, change), std::nullopt, change) {}

Arrival::Arrival(LocalPlace place, std::optional<std::uint64_t> listedSize, std::optional<RemoteChange> change)
    : path(place.path), replaces(std::move(change)), name(place.name), folder(std::move(*place.parent)),
      size(listedSize) {}

FileToFetch Arrival::toFetch() const {
    return {
        .path = path,
        .into = staged,
        .size = size,
        .version = replaces ? std::optional(replaces->remoteDate) : std::nullopt};
}

std::optional<Fingerprint> Arrival::install() const {
    staged.settleAsNew();
    const auto fingerprint = staged.fingerprint();
    return folder.install(staged.name(), name) ? std::optional(fingerprint) : std::nullopt;
}

Fingerprint Arrival::replace(const FTPTransport& transport) {
    const auto& [changed, version, date, both] = *replaces;
    const auto& localFolder = transport.profile.localFolder;
    transport.control->check();
    const auto local = LocalPlace::resolve(localFolder, path);
    if (!isThere(local, version)) {
        throw ChangedMeanwhile(path + " was edited locally while downloading. The local edit was kept; check again.");
    }
    const auto backup = makeBackup(localFolder, local, *transport.control);
    transport.control->check();
    const auto fingerprint = staged.fingerprint();
    if (!replaceKeeping(staged, local, version, backup, localFolder)) {
        throw ChangedMeanwhile(path + " changed while making its backup. The local copy was kept; check again.");
    }
    return fingerprint;
}

void fetchAll(
    const FTPTransport& transport, const std::vector<std::unique_ptr<Arrival>>& arrivals, const FetchEvents& events) {
    std::vector<FileToFetch> files;
    files.reserve(arrivals.size());
    for (const auto& arrival : arrivals) files.push_back(arrival->toFetch());
    fetch(transport, files, events);
}

} // namespace zembrastel
