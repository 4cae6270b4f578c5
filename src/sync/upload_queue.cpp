#include "sync/upload_queue.h"

#include "model/error.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "sync/unchanged_contents.h"
#include "transport/local_place.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::chrono::minutes longestWrite{2};
constexpr int maxDateQueries = 3; // for one file: some servers report no dates

std::uint64_t bytesOf(const std::vector<FileToPublish>& files) {
    std::uint64_t bytes = 0;
    for (const auto& file : files) bytes += static_cast<std::uint64_t>(file.fingerprint.size);
    return bytes;
}

} // namespace

UploadQueue::UploadQueue(
    const SyncWorker& started, const FTPTransport& used, ProgressMeter& counter, FileMap& synchronised)
    : worker(started), transport(used), meter(counter), baseline(synchronised), known(started.seen),
      journal(started.journal), contents(started.contents) {}

std::string uploadProblem(std::string problem, const std::string& path) {
    // curl counts received bytes, of which an upload has none.
    constexpr std::string_view misleading = " with 0 bytes received";
    const auto received = problem.find(misleading);
    if (received != std::string::npos) problem.replace(received, misleading.size(), " before the upload was complete");
    const bool namesIt = problem.ends_with(": " + path) || problem.find('/' + path + ": ") != std::string::npos
                         || problem.find(" copy of " + printable(path) + " to ") != std::string::npos;
    if (namesIt) return problem;
    const bool ended = problem.ends_with('.');
    if (ended) problem.pop_back();
    return problem + " (" + path + (ended ? ")." : ")");
}

std::vector<std::string> UploadQueue::ready(const std::vector<std::string>& stable, const FileMap& current) {
    std::vector<std::string> paths;
    const auto now = worker.clock.steadyNow();
    for (const auto& path : stable) {
        worker.control->check();
        if (!retries.waits(path, current.at(path), now) && !isBeingWritten(path)) paths.push_back(path);
    }
    return paths;
}

std::vector<std::string> UploadQueue::withoutUnchanged(const std::vector<std::string>& paths, const FileMap& current) {
    if (!contents || paths.empty()) return paths;
    const auto unchanged = findUnchangedContents(
        worker.profile, paths, current, {.baseline = baseline, .onServer = known, .contents = *contents},
        *worker.control);
    if (unchanged.empty()) return paths;
    AnnouncedFiles recognised;
    for (const auto& [path, content] : unchanged) {
        baseline.set(path, content.fingerprint);
        retries.forget(path);
        recognised.files.set(path, content.fingerprint);
        recognised.dates.set(path, content.date);
    }
    if (journal) writeJournal([&] { journal->update(recognised); });
    worker.events.deliver(event::ContentsUnchanged{std::move(recognised.files)});
    contents->add(unchanged, baseline);
    std::vector<std::string> toSend;
    std::ranges::copy_if(
        paths, std::back_inserter(toSend), [&](const std::string& path) { return !unchanged.contains(path); });
    return toSend;
}

void UploadQueue::recordContentsOfPublished(std::chrono::milliseconds atMost) {
    if (!contents) return;
    const PublishedFiles files{.baseline = baseline, .onServer = known, .contents = *contents};
    if (!unrecorded) unrecorded = filesWithoutContent(files);
    PublishedContentMap entries;
    const auto began = worker.clock.steadyNow();
    while (!unrecorded->empty() && worker.clock.steadyNow() - began < atMost) {
        const auto& path = unrecorded->back();
        const auto content = readPublishedContent(worker.profile, path, files, *worker.control);
        if (content) entries.emplace(path, *content);
        unrecorded->pop_back();
    }
    contents->add(entries, baseline);
}

bool UploadQueue::allWait(const std::vector<std::string>& changed, const FileMap& current) const {
    const auto now = worker.clock.steadyNow();
    return std::ranges::all_of(changed, [&](const auto& path) { return retries.waits(path, current.at(path), now); });
}

bool UploadQueue::isBeingWritten(const std::string& path) {
    try {
        const auto place = LocalPlace::resolve(worker.profile.localFolder, path);
        if (!place.parent || !hasOpenWriter(place.parent->openForReading(place.name).get())) {
            writtenSince.erase(path);
            return false;
        }
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        return false; // the failure is reported when the file is staged
    }
    const auto now = worker.clock.steadyNow();
    const auto [since, isNew] = writtenSince.try_emplace(path, now);
    if (now - since->second < longestWrite) return true;
    // Reported once; then there is no more waiting until the file is closed.
    if (since->second != FileRetries::Time::min()) {
        activity(
            "Still open for writing in another program after two minutes; uploaded as it is: " + printable(path), true);
        since->second = FileRetries::Time::min();
    }
    return false;
}

LastSeen UploadQueue::lastSeen(const std::string& path) const {
    if (undated.contains(path)) return NothingKnown{};
    if (const auto* version = known.find(path)) return *version;
    if (worker.mayReplaceUnseen) return NothingKnown{};
    if (const auto* date = worker.recordedDates.find(path)) return ServerVersion{.modified = *date};
    return KnownAbsent{};
}

void UploadQueue::send(const std::vector<std::string>& paths, const FileMap& current, std::int64_t pending) {
    std::vector<FileToPublish> files;
    files.reserve(paths.size());
    for (const auto& path : paths) {
        files.push_back({.path = path, .fingerprint = current.at(path), .lastSeen = lastSeen(path)});
    }
    if (doneInBurst == 0) meter.begin(TransferProgress::Work::uploading);
    meter.expectBytes(bytesOf(files));
    const auto inBurst = doneInBurst + files.size();
    staged.clear();
    const PublishEvents events{
        .staged = [this](const FileToPublish& file, int copy) { hashStaged(file, copy); },
        .sending =
            [&](const FileToPublish& file) {
                meter.setFiles(doneInBurst, inBurst);
                worker.events.post(uploadingStatus(file.path, pending)); // awaited with the upload
            },
        .goingLive = [this](const std::vector<CompleteCopy>& copies) { announce(copies); },
        .published = [this](const CompleteCopy& copy) { published(copy); },
        .failed = [this](const FileToPublish& file, const PublishFailure& failure) { failed(file, failure); },
        .notReplaced =
            [this](const FileToPublish& file, const std::optional<ServerVersion>&) { disputed.insert(file.path); },
        .sizesUnconfirmed =
            [this] {
                activity(
                    "This server does not report the sizes of files, so it cannot be verified that uploads are "
                    "complete.",
                    false);
            }};
    const bool reachedAll = publish(transport, files, events);
    reportDisputed();
    if (!reachedAll) throw SyncError(serverFailure ? serverFailure->message : "Transfer failed.");
    doneInBurst = 0;
}

void UploadQueue::hashStaged(const FileToPublish& file, int copy) {
    if (!contents) return;
    try {
        staged[file.path] = hashContents(copy, file.path, [this] { worker.control->check(); });
    } catch (const std::filesystem::filesystem_error&) {
        // Without its hash, the file is sent again when it has a new date.
    }
}

// Before the files go live: an entry holds only when the baseline and the server have its version.
void UploadQueue::recordContents(const std::vector<CompleteCopy>& copies) {
    if (!contents) return;
    PublishedContentMap entries;
    for (const auto& [file, version] : copies) {
        const auto hash = staged.find(file.path);
        if (!version || hash == staged.end()) continue;
        entries.insert_or_assign(
            file.path,
            PublishedContent{.fingerprint = file.fingerprint, .date = version->modified, .hash = hash->second});
        staged.erase(hash);
    }
    contents->add(entries, baseline);
}

void UploadQueue::announce(const std::vector<CompleteCopy>& copies) {
    recordContents(copies);
    if (!journal) return;
    AnnouncedFiles batch;
    for (const auto& [file, version] : copies) {
        if (!version) continue;
        batch.files.set(file.path, file.fingerprint);
        batch.dates.set(file.path, version->modified);
    }
    writeJournal([&] { journal->announce(batch); });
}

void UploadQueue::writeJournal(const std::function<void()>& write) {
    try {
        write();
    } catch (const std::filesystem::filesystem_error&) {
        // A full disk is reported when the state is saved. After a kill, the user is asked one needless question.
    }
}

void UploadQueue::published(const CompleteCopy& copy) {
    const auto& [path, fingerprint, lastSeenVersion] = copy.file;
    baseline.set(path, fingerprint);
    retries.forget(path);
    ++doneInBurst;
    event::Uploaded uploaded{.path = path, .fingerprint = fingerprint};
    undated.erase(path);
    if (copy.version) {
        known.set(path, *copy.version);
        worker.events.post(std::move(uploaded)); // awaited with its date
        worker.events.deliver(event::RemoteDate{.path = path, .date = copy.version->modified});
    } else {
        undated.emplace(path, 0);
        worker.events.deliver(std::move(uploaded));
    }
}

void UploadQueue::failed(const FileToPublish& file, const PublishFailure& failure) {
    Failure why = failureOf(TransferError(failure.code, failure.message, failure.reply));
    why.path = file.path;
    if (failure.kind == PublishFailure::Kind::server) {
        serverFailure = why;
        return;
    }
    why.message = uploadProblem(failure.message, file.path);
    retries.failed(file.path, file.fingerprint, why, worker.clock.steadyNow());
    activity(why.message, true, why);
}

void UploadQueue::queryMissingDates() {
    for (auto file = undated.begin(); file != undated.end();) {
        auto& [path, queries] = *file;
        const auto version = queries < maxDateQueries ? transport.findVersion(path) : std::nullopt;
        const auto* uploaded = baseline.find(path);
        if (version && version->size && uploaded != nullptr
            && *version->size != static_cast<std::uint64_t>(uploaded->size)) {
            disputed.insert(path); // another user replaced it since
            file = undated.erase(file);
        } else if (version) {
            known.set(path, *version);
            worker.events.deliver(event::RemoteDate{.path = path, .date = version->modified});
            file = undated.erase(file);
        } else {
            queries = std::min(queries + 1, maxDateQueries);
            ++file;
        }
    }
    reportDisputed();
}

void UploadQueue::reportDisputed() {
    if (disputed.empty()) return;
    worker.events.deliver(event::ServerChanged{.paths = std::move(disputed)});
    throw Cancelled();
}

std::optional<UploadQueue::Waiting> UploadQueue::failure() const {
    const auto* first = retries.first();
    if (first == nullptr) return std::nullopt;
    const auto left = std::chrono::ceil<std::chrono::seconds>(first->until - worker.clock.steadyNow());
    return Waiting{.failure = first->why, .left = std::max(left, std::chrono::seconds(0))};
}

void UploadQueue::keepFailuresOf(const std::vector<std::string>& changed) {
    retries.forgetIf([&](const std::string& path) { return !std::ranges::binary_search(changed, path); });
    std::erase_if(writtenSince, [&](const auto& file) { return !std::ranges::binary_search(changed, file.first); });
}

void UploadQueue::tryNow(const std::set<std::string>& paths) {
    for (const auto& path : paths) retries.tryNow(path);
}

void UploadQueue::reportRefused() {
    auto refused = retries.all();
    if (refused == reportedRefused) return;
    reportedRefused = refused;
    worker.events.deliver(event::FilesRefused{std::move(refused)});
}

void UploadQueue::activity(std::string text, bool error, std::optional<Failure> failure) const {
    worker.events.deliver(event::Activity{.text = std::move(text), .error = error, .failure = std::move(failure)});
}

} // namespace zembrastel
