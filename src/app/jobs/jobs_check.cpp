// The server check before watching starts.
#include "app/jobs/jobs.h"
#include "app/records.h"
#include "model/error.h"
#include "model/records/comparison_record.h"
#include "platform/text.h"
#include "sync/progress_meter.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

// Whether these are the same versions of the same files, on both sides.
bool areSameVersions(const std::vector<RemoteChange>& a, const std::vector<RemoteChange>& b) {
    return std::ranges::equal(a, b, [](const RemoteChange& one, const RemoteChange& other) {
        return one.path == other.path && one.local == other.local && one.remoteDate == other.remoteDate;
    });
}

// The contents that the check compared are those of the server's versions.
void keepHashes(std::optional<PublishedContents> contents, const ServerCheck& check, FileMap baseline) {
    if (!contents) return;
    PublishedContentMap entries;
    for (const auto& [path, hash] : check.hashes) {
        const auto* local = check.recognised.files.find(path);
        const auto* date = check.recognised.dates.find(path);
        if (local == nullptr || date == nullptr) continue;
        entries.emplace(path, PublishedContent{.fingerprint = *local, .date = *date, .hash = hash});
        baseline.set(path, *local);
    }
    contents->add(entries, baseline);
}

} // namespace

void Jobs::showChecking(const Uuid& id) {
    parts.statuses.enter(id, Phase::checking, "Comparing server dates before any local changes upload…");
}

ServerRecord Jobs::recordFor(const Uuid& id) {
    ServerRecord record = recordOf(parts.records.saved(), id);
    const auto& unsettled = parts.reviews.unsettled(id);
    record.unanswered = unsettled.unanswered;
    record.disputed = unsettled.disputed;
    record.compareAll = sendsEverything(id);
    record.newerAtFirst = unsettled.newerAtFirst;
    const auto& folder = parts.records.folder();
    if (record.isFirst() && folder) record.compared = ComparisonRecord(*folder, id).read();
    return record;
}

void Jobs::startCheck(const Uuid& id, const Earlier& earlier) {
    parts.reviews.unsettled(id).missing.clear();
    showChecking(id);
    parts.statuses.log(id, "Checking for newer server files before watching resumes.");
    const Uuid generation = jobs.at(id).work().generation;
    const auto found = [this, id, generation, earlier](const std::shared_ptr<ServerCheck>& check) {
        parts.context.post(
            ifCurrent(id, generation, [this, id, check, earlier] { finishCheck(std::move(*check), id, earlier); }));
    };
    const auto failed = [this, id, generation](const Failure& failure) {
        parts.context.post(ifCurrent(id, generation, [this, id, failure] { failCheck(failure, id, true); }));
    };
    const auto body =
        [this, work = jobs.at(id).work(), found, failed, record = recordFor(id), journal = parts.records.journal(id),
         contents = parts.records.contents(jobs.at(id).work().profile)](const std::stop_token& stop) mutable {
            ProgressMeter meter(parts.clock, eventSink(work.profile.id, work.generation, stop).progress);
            if (journal) record.announced = journal->read();
            while (!stop.stop_requested()) {
                try {
                    meter.begin(TransferProgress::Work::comparing);
                    const auto check = std::make_shared<ServerCheck>(
                        settings.work.check(transportFor(work, meter, settings.privateItems), record, stop));
                    work.control->check();
                    keepHashes(contents, *check, record.baseline);
                    found(check);
                    return;
                } catch (const Cancelled&) {
                    return;
                } catch (const std::exception& error) {
                    failed(failureOf(error));
                }
                if (!work.retryWait->sleep(parts.clock, stop)) return;
            }
        };
    if (step(id, [&](Job& job) { return job.check([&] { return startTask(id, body); }); })) publishReview(id);
}

void Jobs::finishCheck(ServerCheck check, const Uuid& id, const Earlier& earlier) {
    const auto adoption = std::exchange(parts.reviews.unsettled(id).adoption, std::nullopt);
    if (check.first) {
        askForChoice(check, id);
        if (adoption) (void)adopt(id, *adoption);
        return;
    }
    const auto changes = std::move(check.changes);
    recordRecognised(check.recognised, id);
    jobs.at(id).keepSeen(check.seen);
    findToSend(std::move(check), id);
    parts.reviews.unsettled(id).unanswered = pathsOf(changes);
    parts.records.recordComparison(id);
    if (changes.empty()) {
        launchWorker(id);
        return;
    }
    if (!step(id, [&](Job& job) { return job.awaitDecision({.id = id, .changes = changes}); })) return;
    if (earlier && areSameVersions(earlier->changes, changes)) {
        parts.statuses.log(
            id, "The newer files on the server are the same as when you decided: your decision is carried out.");
        if (decide(id, earlier->selected) == Decision::accepted) return;
    } else if (earlier) {
        parts.statuses.log(
            id, "The newer files on the server are not the same as when you decided: your decision was dropped.");
    }
    askForDecision(id);
}

void Jobs::failCheck(const Failure& reported, const Uuid& id, bool willRetry) {
    const Failure failure = withNetwork(reported, id);
    if (!step(id, [&](Job& job) {
            return willRetry ? job.failCheck(failure.message) : job.failDownload(failure.message);
        })) {
        return;
    }
    parts.statuses.enterFailed(
        id, Phase::checkFailed, failure,
        willRetry ? "Uploads remain paused; the check will retry automatically."
                  : "Uploads remain paused. Retry the server check to review the latest versions.");
    parts.statuses.logFailure(id, failure.message, failure);
    publishReview(id);
}

void Jobs::recordRecognised(const AnnouncedFiles& recognised, const Uuid& id) {
    if (recognised.dates.empty()) return;
    PathSet paths;
    for (const auto& [path, fingerprint] : recognised.files) {
        parts.records.recordFile(id, path, fingerprint);
        paths.insert(path);
    }
    for (const auto& [path, date] : recognised.dates) parts.records.recordDate(id, path, date);
    if (!paths.empty() && !sendsEverything(id)) {
        parts.statuses.log(
            id, "The same on the server and here, so recorded without a question: " + listedPaths(paths));
    }
    parts.records.saveSoon(id);
}

bool Jobs::sendsEverything(const Uuid& id) { return parts.reviews.unsettled(id).resend == Resend::everything; }

void Jobs::findToSend(ServerCheck check, const Uuid& id) {
    auto& unsettled = parts.reviews.unsettled(id);
    if (sendsEverything(id)) {
        const auto toSend = check.toSend.size();
        jobs.at(id).keepToSend(std::move(check.toSend));
        parts.statuses.log(
            id, "Compared all files with the server. The same there: " + std::to_string(check.recognised.files.size())
                    + ". To be sent again: " + std::to_string(toSend) + ".");
    } else if (unsettled.resend) {
        jobs.at(id).keepToSend(std::move(check.missing));
    } else {
        unsettled.missing = std::move(check.missing);
        if (unsettled.missing.empty()) return;
        const auto files = unsettled.missing.size();
        parts.statuses.log(
            id, std::to_string(files) + (files == 1 ? " file is" : " files are")
                    + " missing on the server: " + listedPaths(unsettled.missing) + ". Waiting for your choice.");
    }
}

// What is sent again must be saved before the request is forgotten.
void Jobs::endResend(const Uuid& id) {
    auto& resend = parts.reviews.unsettled(id).resend;
    if (!resend) return;
    resend.reset();
    try {
        parts.records.persist();
        if (const auto& folder = parts.records.folder()) ResendRequest(*folder, id).remove();
    } catch (const std::exception& error) {
        // The next start of the program repeats the request, which does no harm.
        parts.statuses.reportUnsaved({id}, describe(error));
    }
}

} // namespace zembrastel
