#include "model/scan.h"
#include "platform/name_order.h"
#include "platform/text.h"

#include "transport/compare/missing_files.h"
#include "transport/compare/server_record.h"
#include "transport/ftp_transport.h"
#include "transport/listing/remote_queries.h"

#include <algorithm>
#include <chrono>
#include <variant>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::chrono::duration<double> precision{1.0};

// False for a version that was announced because the user decided about it: such a version has only a size.
bool isLocalVersion(const Fingerprint& announced) { return announced.modified != 0 || announced.inode != 0; }

class Comparison {
public:
    Comparison(
        const FTPTransport& used, const FileMap& scanned, const ServerRecord& record, const FTPTransport::Report& line)
        : transport(used), local(scanned), recorded(record), report(line) {}

    ServerCheck run() {
        walk();
        findUnanswered();
        findHiddenEdits();
        const auto shift = commonShift(differences());
        if (recorded.compareAll) {
            compareAll(shift);
        } else {
            for (const auto& [path, version] : found.seen) {
                transport.control->check();
                if (!takeAlike(path, version)) decide(path, version, shift);
            }
            if (found.first) completeFirst();
            const auto listed = found.seen.begin() == found.seen.end()
                                    ? std::nullopt
                                    : std::optional(std::string((*found.seen.begin()).path));
            found.missing = zembrastel::findMissing(transport, unlisted(), listed);
        }
        std::stable_sort(found.changes.begin(), found.changes.end(), [](const RemoteChange& a, const RemoteChange& b) {
            return compareNames(a.path, b.path) < 0;
        });
        return std::move(found);
    }

private:
    // Level by level, so that the folders of one level are listed together.
    void walk() {
        FolderLister lister(transport);
        std::vector<std::string> level{""};
        for (int depth = 0; !level.empty(); ++depth) {
            checkFolderDepth(depth);
            std::vector<std::string> below;
            lister.list(level, [&](std::size_t folder, ListedEntries listed) {
                transport.control->check();
                add(level[folder], resultOf(std::move(listed)), below);
            });
            level = std::move(below);
        }
        findDates();
    }

    void add(const std::string& path, std::vector<RemoteEntry> entries, std::vector<std::string>& below) {
        report(path.empty() ? "Comparing the remote folder" : "Comparing " + path);
        transport.nameAsLocal(path, entries, localItems(local, path));
        if (transport.observer != nullptr) transport.observer->folderListed(0); // its files are counted below
        for (const auto& entry : entries) {
            std::string relative = childPath(path, entry.name);
            if (transport.profile.exclusions.matchEntry(relative)) continue;
            if (!entry.directory) {
                if (local.contains(relative)) addFile(std::move(relative), entry);
            } else if (local.containsFolder(relative)) {
                below.push_back(std::move(relative));
            }
        }
    }

    void addFile(std::string path, const RemoteEntry& entry) {
        if (transport.observer != nullptr) transport.observer->fileDone();
        if (entry.modified) {
            found.seen.set(path, {.modified = *entry.modified, .size = entry.size});
        } else {
            undated.push_back(std::move(path));
            listedSizes.push_back(entry.size);
        }
    }

    void findDates() {
        const auto answers = askAboutFiles(transport, undated);
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const auto facts = readFacts(resultOf(answers[i]), undated[i]);
            found.seen.set(undated[i], {.modified = facts.modified, .size = facts.size ? facts.size : listedSizes[i]});
        }
    }

    // Asks about hidden files that are to be uploaded: the upload would not replace a version that was not seen here.
    void findHiddenEdits() {
        if (!recorded.wasCompared) return;
        std::vector<std::string> unseen;
        for (const auto& [path, here] : local) {
            if (!mayBeHidden(path) || found.seen.contains(path)) continue;
            const auto* published = recorded.baseline.find(path);
            if (published == nullptr || isOtherVersion(here, *published)) unseen.emplace_back(path);
        }
        if (unseen.empty()) return;
        for (const auto& [path, version] : findHidden(transport, unseen)) found.seen.set(path, version);
    }

    // Asks about single files: a listing may hide an existing file.
    void findUnanswered() {
        std::vector<std::string> unseen;
        for (const auto& path : recorded.unanswered) {
            if (!found.seen.contains(path) && local.contains(path)) unseen.push_back(path);
        }
        const auto answers = askAboutFiles(transport, unseen);
        for (std::size_t i = 0; i < answers.size(); ++i) {
            try {
                const auto facts = readFacts(resultOf(answers[i]), unseen[i]);
                found.seen.set(unseen[i], {.modified = facts.modified, .size = facts.size});
            } catch (const SyncError&) {
                // It does not exist, or the server does not report its date.
            }
        }
    }

    // True for a file of equal size in the first comparison.
    bool takeAlike(const std::string& path, const ServerVersion& version) {
        const Fingerprint& here = local.at(path);
        if (!recorded.isFirst() || version.size != static_cast<std::uint64_t>(here.size)) return false;
        if (!found.first) found.first.emplace();
        const auto isFor = [&](const AnnouncedFiles& compared) {
            const auto* file = compared.files.find(path);
            const auto* date = compared.dates.find(path);
            return file != nullptr && *file == here && date != nullptr && *date == version.modified;
        };
        found.first->alike.files.set(path, here);
        found.first->alike.dates.set(path, version.modified);
        if (isFor(recorded.compared.same)) found.first->add(path, true);
        if (isFor(recorded.compared.different)) found.first->add(path, false);
        return true;
    }

    // The user must not choose before all files are known: also those that the listings hide.
    void completeFirst() {
        std::vector<std::string> unseen;
        for (const auto& [path, fingerprint] : local) {
            if (!found.seen.contains(path)) unseen.emplace_back(path);
        }
        for (const auto& [path, version] : findHidden(transport, unseen)) {
            found.seen.set(path, version);
            if (!takeAlike(path, version)) decide(path, version, {});
        }
        found.first->localFiles = local.size();
        found.first->otherSizes = found.seen.size() - found.first->alikeFiles() - found.first->different.files.size();
    }

    // Found minus recorded dates of the files with their recorded size.
    [[nodiscard]] std::vector<std::chrono::duration<double>> differences() const {
        std::vector<std::chrono::duration<double>> all;
        for (const auto& [path, version] : found.seen) {
            const auto* date = recorded.knownDates.find(path);
            if (date != nullptr && hasRecordedSize(path, version)) all.push_back(version.modified - *date);
        }
        return all;
    }

    [[nodiscard]] bool hasRecordedSize(const std::string& path, const ServerVersion& version) const {
        const auto* file = recorded.baseline.find(path);
        return file != nullptr && version.size == static_cast<std::uint64_t>(file->size);
    }

    void decide(const std::string& path, const ServerVersion& version, std::chrono::seconds shift) {
        if (const auto* announced = announcedVersion(path, version)) {
            recognise(path, version, isLocalVersion(*announced) ? announced : nullptr);
            return;
        }
        if (!hasRecordedSize(path, version)) shift = {};
        const Fingerprint& here = local.at(path);
        const auto* known = recorded.knownDates.find(path);
        const RecordedFile record{
            .local = recorded.baseline.find(path), .remoteDate = known, .announced = announcedWith(path, known)};
        const bool appeared = recorded.wasCompared && record.local == nullptr && known == nullptr;
        const bool isUnanswered = recorded.unanswered.contains(path);
        const bool isNewer =
            shouldOffer(version.modified, here, known == nullptr ? std::nullopt : std::optional(*known + shift));
        if (!appeared && !isUnanswered && !isNewer && !differsFromRecord(version, record, shift)) {
            if (known == nullptr || shift.count() != 0) recognise(path, version, nullptr);
            return;
        }
        if (isEqual(path, here, version)) {
            recognise(path, version, &here);
            return;
        }
        found.changes.push_back(
            {.path = path,
             .local = here,
             .remoteDate = version.modified,
             .bothChanged = (appeared && !recorded.newerAtFirst.contains(path)) || recorded.disputed.contains(path)
                            || (isUnanswered && !isNewer)
                            || (record.local != nullptr && isOtherVersion(here, *record.local))});
    }

    // Published files, locally unchanged since, that no listing showed.
    [[nodiscard]] std::vector<std::string> unlisted() const {
        std::vector<std::string> paths;
        for (const auto& [path, published] : recorded.baseline) {
            const auto* here = local.find(path);
            const auto* date = recorded.knownDates.find(path);
            const bool isLeft = !recorded.compareAll && date != nullptr && *date == leftMissing;
            const bool isUnchanged = here != nullptr && !isOtherVersion(*here, published);
            if (isUnchanged && !isLeft && !found.seen.contains(path)) paths.emplace_back(path);
        }
        return paths;
    }

    // No file counts as published. Files with equal contents are recorded. Of the others, versions that were recorded
    // or decided about may be replaced; the user decides about all other versions.
    void compareAll(std::chrono::seconds shift) {
        std::vector<std::string> unseen;
        for (const auto& [path, fingerprint] : local) {
            if (!found.seen.contains(path)) unseen.emplace_back(path);
        }
        for (const auto& [path, version] : findHidden(transport, unseen)) found.seen.set(path, version);
        const auto equal = transport.filesWithEqualContents(comparable());
        found.hashes = equal;
        for (const auto& [path, version] : found.seen) {
            const Fingerprint& here = local.at(path);
            if (equal.contains(path)) {
                found.recognised.files.set(path, here);
                found.recognised.dates.set(path, version.modified);
            } else if (!isKnownVersion(path, version, shift)) {
                const auto* published = recorded.baseline.find(path);
                const bool isNewer = shouldOffer(version.modified, here, std::nullopt);
                const bool isEdited = published != nullptr && isOtherVersion(here, *published);
                found.changes.push_back(
                    {.path = std::string(path),
                     .local = here,
                     .remoteDate = version.modified,
                     .bothChanged = !isNewer || isEdited});
            } else {
                found.toSend.emplace(path);
            }
        }
        for (auto& path : unlisted()) found.toSend.insert(std::move(path));
    }

    // Files of equal size on both sides, small ones first, up to the limit for fetching.
    [[nodiscard]] std::vector<FTPTransport::FileToCompare> comparable() const {
        std::vector<FTPTransport::FileToCompare> files;
        for (const auto& [path, version] : found.seen) {
            const Fingerprint& here = local.at(path);
            if (version.size == static_cast<std::uint64_t>(here.size)) files.push_back({std::string(path), here});
        }
        std::ranges::stable_sort(files, {}, [](const auto& file) { return file.fingerprint.size; });
        auto left = static_cast<std::int64_t>(toFetch);
        const auto tooMuch =
            std::ranges::find_if(files, [&left](const auto& file) { return (left -= file.fingerprint.size) < 0; });
        files.erase(tooMuch, files.end());
        return files;
    }

    // True if this program uploaded the version, or the user acknowledged it.
    [[nodiscard]] bool isKnownVersion(
        const std::string& path, const ServerVersion& version, std::chrono::seconds shift) const {
        if (announcedVersion(path, version) != nullptr) return true;
        const auto* date = recorded.knownDates.find(path);
        if (date == nullptr || recorded.unanswered.contains(path)) return false;
        const auto* published = recorded.baseline.find(path);
        const auto size = published == nullptr ? version.size : static_cast<std::uint64_t>(published->size);
        if (!hasRecordedSize(path, version)) shift = {};
        return isVersion(version, *date + shift, size.value_or(0));
    }

    // The announced upload or decision for this version, which was perhaps not saved; null if there is none.
    [[nodiscard]] const Fingerprint* announcedVersion(const std::string& path, const ServerVersion& version) const {
        const auto* file = recorded.announced.files.find(path);
        const auto* date = recorded.announced.dates.find(path);
        if (file == nullptr || date == nullptr) return nullptr;
        return isVersion(version, *date, static_cast<std::uint64_t>(file->size)) ? file : nullptr;
    }

    [[nodiscard]] const Fingerprint* announcedWith(const std::string& path, const RemoteDate* known) const {
        const auto* date = recorded.announced.dates.find(path);
        return known != nullptr && date != nullptr && *date == *known ? recorded.announced.files.find(path) : nullptr;
    }

    void recognise(const std::string& path, const ServerVersion& version, const Fingerprint* synchronised) {
        const auto* known = recorded.knownDates.find(path);
        if (known == nullptr || *known != version.modified) found.recognised.dates.set(path, version.modified);
        const auto* before = recorded.baseline.find(path);
        if (synchronised == nullptr || (before != nullptr && !isOtherVersion(*synchronised, *before))) return;
        found.recognised.files.set(path, *synchronised);
    }

    [[nodiscard]] bool isEqual(const std::string& path, const Fingerprint& here, const ServerVersion& version) {
        const auto size = static_cast<std::uint64_t>(here.size);
        if (version.size != size || size > toFetch) return false;
        toFetch -= size;
        auto equal = transport.filesWithEqualContents({{path, here}});
        const bool isSame = !equal.empty();
        found.hashes.merge(equal);
        return isSame;
    }

    const FTPTransport& transport;
    const FileMap& local;
    const ServerRecord& recorded;
    const FTPTransport::Report& report;
    std::uint64_t toFetch = std::uint64_t{32} << 20; // bytes, to compare contents
    std::vector<std::string> undated;                // files without a date in the listings
    std::vector<std::optional<std::uint64_t>> listedSizes;
    ServerCheck found;
};

} // namespace

bool shouldOffer(RemoteDate remote, const Fingerprint& local, std::optional<RemoteDate> knownRemote) {
    if (sinceUnixEpoch(remote) <= std::chrono::duration<double>(local.modified) + precision) return false;
    return isUnknownVersion(remote, knownRemote);
}

bool isUnknownVersion(RemoteDate remote, std::optional<RemoteDate> knownRemote) {
    return !knownRemote || remote - *knownRemote > precision;
}

ServerCheck FTPTransport::newerRemoteFiles(const ServerRecord& recorded, const Report& report) const {
    const FileMap local =
        scan(profile, {.checkpoint = [this] { control->check(); }, .privateItems = privateItems}, recorded.baseline);
    if (local.empty()) {
        (void)list(""); // fails if the server cannot be reached
        return {};
    }
    return Comparison(*this, local, recorded, report).run();
}

} // namespace zembrastel
