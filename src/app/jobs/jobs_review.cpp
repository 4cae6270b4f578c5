// The review of what the server check finds, and the download of the versions that the user chose.
#include "app/jobs/jobs.h"
#include "model/error.h"
#include "sync/progress_meter.h"
#include "transport/ftp_transport.h"

namespace zembrastel {

void Jobs::askForDecision(const Uuid& id) {
    const std::string count = std::to_string(review(id)->changes.size());
    parts.statuses.enter(
        id, Phase::awaitingReview,
        count + " newer server files found. Uploads are paused until you choose which versions to keep.");
    parts.statuses.log(id, "Found " + count + " newer server files. Waiting for your review.");
    publishReview(id);
    parts.reviews.presentNext();
}

Decision Jobs::decide(const Uuid& id, const PathSet& downloads) {
    const std::vector<RemoteChange> changes = review(id)->changes;
    const SavedState before = parts.records.saved();
    std::vector<RemoteChange> approved;
    std::vector<RemoteChange> kept;
    for (const auto& change : changes) {
        if (downloads.contains(change.path)) {
            approved.push_back(change);
        } else {
            parts.records.recordDate(id, change.path, change.remoteDate);
            kept.push_back(change);
        }
    }
    if (sendsEverything(id)) parts.records.forgetFiles(id, pathsOf(kept));
    try {
        parts.records.persist();
    } catch (const std::exception& error) {
        parts.records.restore(before); // what is not decided is offered again
        parts.alert(describe(error));
        return Decision::refused;
    }
    acknowledgeSizes(kept, id);
    parts.reviews.unsettled(id).unanswered = pathsOf(approved);
    if (approved.empty()) {
        launchWorker(id);
    } else {
        startReviewDownload(id, approved);
    }
    return Decision::accepted;
}

// The user keeps the local files, and these versions on the server are not offered again. Their dates are recorded, and
// saved by now; the sizes distinguish them from edits within the same second.
void Jobs::acknowledgeSizes(const std::vector<RemoteChange>& kept, const Uuid& id) {
    auto journal = parts.records.journal(id);
    if (!journal) return;
    AnnouncedFiles decided;
    for (const auto& change : kept) {
        const auto* version = jobs.at(id).work().seen.find(change.path);
        if (version == nullptr || !version->size) continue;
        decided.files.set(change.path, {.size = static_cast<std::int64_t>(*version->size)});
        decided.dates.set(change.path, change.remoteDate);
    }
    if (decided.dates.empty()) return;
    try {
        journal->announce(decided);
    } catch (const std::filesystem::filesystem_error&) {
        // The price is that the next start asks once more.
    }
}

void Jobs::startReviewDownload(const Uuid& id, const std::vector<RemoteChange>& approved) {
    parts.statuses.enter(
        id, Phase::downloadingReview,
        "Replacing " + std::to_string(approved.size()) + " selected local files, with backups.");
    const auto onMain = [this, id, generation = jobs.at(id).work().generation](std::function<void()> report) {
        parts.context.post(ifCurrent(id, generation, std::move(report)));
    };
    const auto body = [this, id, work = jobs.at(id).work(), approved, onMain](const std::stop_token& stop) {
        try {
            ProgressMeter meter(parts.clock, eventSink(id, work.generation, stop).progress);
            meter.begin(TransferProgress::Work::downloading, approved.size());
            PathSet leftOut;
            transportFor(work, meter)
                .replaceLocal(
                    approved,
                    {.replaced =
                         [&](const RemoteChange& change, const Fingerprint& installed) {
                             onMain([this, id, change, installed] { recordDownload(id, change, installed); });
                             meter.fileDone();
                         },
                     .refused =
                         [&](const RemoteChange& change, const ChangedMeanwhile& refusal) {
                             leftOut.insert(change.path);
                             onMain([this, id, text = describe(refusal)] { parts.statuses.logFailure(id, text); });
                             meter.fileDone();
                         }});
            onMain([this, id, leftOut] { finishReviewDownload(id, leftOut); });
        } catch (const Cancelled&) {
            // Stopped: what was replaced is recorded, the rest is as it was.
        } catch (const std::exception& error) {
            onMain([this, id, failure = failureOf(error)] { failCheck(failure, id, false); });
        }
    };
    if (step(id, [&](Job& job) { return job.download([&] { return startTask(id, body); }); })) publishReview(id);
}

void Jobs::recordDownload(const Uuid& id, const RemoteChange& change, const Fingerprint& installed) {
    parts.reviews.unsettled(id).unanswered.erase(change.path);
    receive(event::Downloaded{.path = change.path, .fingerprint = installed}, id);
    receive(event::RemoteDate{.path = change.path, .date = change.remoteDate}, id);
    parts.statuses.log(
        id, "Downloaded newer server copy: " + change.path + " (previous local copy backed up)",
        Activity::Kind::downloaded, change.path);
}

void Jobs::finishReviewDownload(const Uuid& id, const PathSet& leftOut) {
    if (leftOut.empty()) {
        launchWorker(id);
        return;
    }
    parts.statuses.logFailure(
        id, "Not downloaded, because they changed meanwhile: " + listedPaths(leftOut)
                + ". The server is checked again before anything is uploaded.");
    startCheck(id, std::nullopt);
}

} // namespace zembrastel
