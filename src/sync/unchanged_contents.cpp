#include "sync/unchanged_contents.h"

#include "transport/compare/server_record.h"
#include "transport/local_place.h"

#include <algorithm>
#include <map>
#include <optional>
#include <sys/stat.h>

namespace zembrastel {
namespace {

// The content of exactly this version; nullopt if the file is another one by now.
std::optional<ContentHash> hashOfVersion(
    const std::string& localFolder, const std::string& path, const Fingerprint& version,
    const TransferControl& control) {
    const auto place = LocalPlace::resolve(localFolder, path);
    if (place.fingerprint() != version) return std::nullopt;
    const Descriptor opened = place.parent->openForReading(place.name);
    struct stat attributes {};
    if (::fstat(opened.get(), &attributes) != 0) return std::nullopt;
    if (Fingerprint::of(*place.parent, attributes) != version) return std::nullopt;
    const auto hash = hashContents(opened.get(), place.url, [&control] { control.check(); });
    return place.fingerprint() == version ? std::optional(hash) : std::nullopt;
}

// The same; nullopt also if the file cannot be read, which is reported when the file is sent.
std::optional<ContentHash> readableContent(
    const std::string& localFolder, const std::string& path, const Fingerprint& version,
    const TransferControl& control) {
    control.check();
    try {
        return hashOfVersion(localFolder, path, version, control);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

bool mayHavePublishedContent(
    const Fingerprint& now, const Fingerprint* baseline, const PublishedContent* content,
    const ServerVersion* onServer) {
    if (baseline == nullptr || content == nullptr || onServer == nullptr) return false;
    return now.size == baseline->size && content->fingerprint == *baseline
           && isVersion(*onServer, content->date, static_cast<std::uint64_t>(now.size));
}

PublishedContentMap findUnchangedContents(
    const Profile& profile, const std::vector<std::string>& changed, const FileMap& current,
    const PublishedFiles& published, const TransferControl& control) {
    std::map<std::string, Fingerprint, std::less<>> candidates;
    for (const auto& path : changed) {
        const auto* recorded = published.baseline.find(path);
        if (recorded != nullptr && recorded->size == current.at(path).size) candidates.emplace(path, *recorded);
    }
    if (candidates.empty()) return {};
    PublishedContentMap unchanged;
    for (const auto& [path, content] : published.contents.find(candidates)) {
        const auto& now = current.at(path);
        const auto* onServer = published.onServer.find(path);
        if (!mayHavePublishedContent(now, published.baseline.find(path), &content, onServer)) continue;
        if (readableContent(profile.localFolder, path, now, control) != content.hash) continue;
        unchanged.emplace(path, PublishedContent{.fingerprint = now, .date = content.date, .hash = content.hash});
    }
    return unchanged;
}

std::vector<std::string> filesWithoutContent(const PublishedFiles& published) {
    std::map<std::string, Fingerprint, std::less<>> versions;
    for (const auto& [path, fingerprint] : published.baseline) {
        const auto* onServer = published.onServer.find(path);
        const bool isThere = onServer != nullptr && onServer->size == static_cast<std::uint64_t>(fingerprint.size);
        if (isThere) versions.emplace(path, fingerprint);
    }
    if (versions.empty()) return {};
    const auto recorded = published.contents.find(versions);
    std::vector<std::string> without;
    for (const auto& [path, fingerprint] : versions) {
        if (!recorded.contains(path)) without.push_back(path);
    }
    std::ranges::reverse(without);
    return without;
}

std::optional<PublishedContent> readPublishedContent(
    const Profile& profile, const std::string& path, const PublishedFiles& published, const TransferControl& control) {
    const auto* fingerprint = published.baseline.find(path);
    const auto* onServer = published.onServer.find(path);
    if (fingerprint == nullptr || onServer == nullptr) return std::nullopt;
    const auto hash = readableContent(profile.localFolder, path, *fingerprint, control);
    if (!hash) return std::nullopt;
    return PublishedContent{.fingerprint = *fingerprint, .date = onServer->modified, .hash = *hash};
}

std::string unchangedContentsLine(std::uint64_t files) {
    return std::to_string(files)
           + (files == 1 ? " file has a new date but the same content and is not sent."
                         : " files have a new date but the same content and are not sent.");
}

} // namespace zembrastel
