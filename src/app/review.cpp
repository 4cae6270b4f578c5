// The server check before watching starts, and the review of what it finds.
#include "app/app_model.h"
#include "app/record_of.h"
#include "model/error.h"
#include "platform/text.h"
#include "sync/progress_meter.h"
#include "sync/sync_worker.h"
#include "transport/compare/server_record.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <cassert>

namespace zembrastel {
namespace {

FTPTransport transportFor(
    const Assignment& work, ProgressMeter& meter, const std::vector<PrivateItem>& privateItems = {}) {
    return {
        .profile = work.profile,
        .password = work.password,
        .control = work.control,
        .observer = &meter,
        .privateItems = privateItems,
        .traits = work.traits};
}

PathSet pathsOf(const std::vector<RemoteChange>& changes) {
    PathSet paths;
    for (const auto& change : changes) paths.insert(change.path);
    return paths;
}

// Are these the same versions of the same files, on both sides?
bool areSameVersions(const std::vector<RemoteChange>& a, const std::vector<RemoteChange>& b) {
    return std::ranges::equal(a, b, [](const RemoteChange& one, const RemoteChange& other) {
        return one.path == other.path && one.local == other.local && one.remoteDate == other.remoteDate;
    });
}

} // namespace

void AppModel::showChecking(const Uuid& id) {
    changeStatus(id, [](ProfileStatus& status) {
        status.enter(Phase::checking, "Comparing server dates before any local changes upload…");
    });
}

void AppModel::startCheck(const Uuid& id, const Earlier& earlier) {
    missing.erase(id);
    showChecking(id);
    log(id, "Checking for newer server files before watching resumes.");
    const Uuid generation = jobs.at(id).work().generation;
    const auto found = [this, id, generation, earlier](const ServerCheck& check) {
        context.post(onlyIfCurrent(id, generation, [this, id, check, earlier] { finishCheck(check, id, earlier); }));
    };
    const auto failed = [this, id, generation](const std::string& message) {
        context.post(onlyIfCurrent(id, generation, [this, id, message] { failedCheck(message, id, true); }));
    };
    ServerRecord recorded = recordOf(state, id);
    recorded.unanswered = unanswered[id];
    recorded.disputed = disputed[id];
    recorded.compareAll = sendsEverything(id);
    const auto body = [this, work = jobs.at(id).work(), found, failed, record = std::move(recorded),
                       journal = journalOf(id)](const std::stop_token& stop) mutable {
        ProgressMeter meter(options.clock, eventSink(work.profile.id, work.generation, stop).progress);
        if (journal) record.announced = journal->read();
        while (!stop.stop_requested()) {
            try {
                meter.begin(TransferProgress::Work::comparing);
                const auto check = jobWork.check(transportFor(work, meter, privateItems), record, stop);
                work.control->check();
                found(check);
                return;
            } catch (const Cancelled&) {
                return;
            } catch (const std::exception& error) {
                failed(describe(error));
            }
            if (!work.retryWait->sleep(options.clock, stop)) return;
        }
    };
    if (step(id, [&](Job& job) { return job.check([&] { return startTask(id, body); }); })) publishReview(id);
}

void AppModel::finishCheck(const ServerCheck& check, const Uuid& id, const Earlier& earlier) {
    const auto& changes = check.changes;
    recordRecognised(check.recognised, id);
    jobs.at(id).keepSeen(check.seen);
    findToSend(check, id);
    unanswered[id] = pathsOf(changes);
    if (changes.empty()) {
        rememberComparison(id);
        launchWorker(id);
        return;
    }
    if (!step(id, [&](Job& job) { return job.awaitDecision({.id = id, .changes = changes}); })) return;
    if (earlier && areSameVersions(earlier->changes, changes)) {
        log(id, "The same files are newer on the server as when you decided: that decision is carried out.");
        if (carryOut(id, earlier->selected) == Decision::accepted) return;
    } else if (earlier) {
        log(id, "Other files are newer on the server than when you decided: nothing was done by that decision.");
    }
    askForDecision(id);
}

bool AppModel::sendsEverything(const Uuid& id) const {
    const auto planned = resends.find(id);
    return planned != resends.end() && planned->second == Resend::everything;
}

void AppModel::findToSend(const ServerCheck& check, const Uuid& id) {
    if (sendsEverything(id)) {
        jobs.at(id).keepToSend(check.toSend);
        log(id, "Compared all files with the server. The same there: " + std::to_string(check.recognised.files.size())
                    + ". To be sent again: " + std::to_string(check.toSend.size()) + ".");
    } else if (resends.contains(id)) {
        jobs.at(id).keepToSend(check.missing);
    } else {
        missing[id] = check.missing;
        if (!check.missing.empty()) {
            const auto files = check.missing.size();
            log(id, std::to_string(files) + (files == 1 ? " file is" : " files are")
                        + " missing on the server: " + listedPaths(check.missing) + ". Waiting for your choice.");
        }
    }
}

void AppModel::forgetPublished(const PathSet& paths, const Uuid& id) {
    if (paths.empty()) return;
    state.baselines[id].eraseIf([&paths](std::string_view path, const Fingerprint&) { return paths.contains(path); });
    saveSoon(id);
}

void AppModel::recordRecognised(const AnnouncedFiles& recognised, const Uuid& id) {
    if (recognised.dates.empty()) return;
    std::set<std::string, std::less<>> paths;
    for (const auto& [path, fingerprint] : recognised.files) {
        state.baselines[id].set(path, fingerprint);
        paths.insert(path);
    }
    for (const auto& [path, date] : recognised.dates) recordRemoteDate(path, date, id);
    if (!paths.empty() && !sendsEverything(id))
        log(id, "The same on the server and here, so recorded without a question: " + listedPaths(paths));
    saveSoon(id);
}

// A file of which nothing is recorded is another matter at the next comparison. See ServerRecord::wasCompared.
void AppModel::rememberComparison(const Uuid& id) {
    if (!state.remoteDates) state.remoteDates.emplace();
    if (state.remoteDates->try_emplace(id).second) saveSoon(id);
}

void AppModel::askForDecision(const Uuid& id) {
    const std::string count = std::to_string(jobs.at(id).review()->changes.size());
    changeStatus(id, [&count](ProfileStatus& status) {
        status.enter(
            Phase::awaitingReview,
            count + " newer server files found. Uploads are paused until you choose which versions to keep.");
    });
    log(id, "Found " + count + " newer server files. Waiting for your review.");
    publishReview(id);
    showNextReview();
}

void AppModel::failedCheck(const std::string& message, const Uuid& id, bool willRetry) {
    if (!step(id, [&](Job& job) { return willRetry ? job.failCheck(message) : job.failDownload(message); })) return;
    changeStatus(id, [&](ProfileStatus& status) {
        status.enter(
            Phase::checkFailed,
            sentence(message)
                + (willRetry ? " Uploads remain paused; the check will retry automatically."
                             : " Uploads remain paused. Retry the server check to review the latest versions."));
    });
    log(id, message, Activity::Kind::failure);
    publishReview(id);
}

void AppModel::present(std::optional<RemoteReview> review) {
    presented = std::move(review);
    notify([](ModelObserver& observer) { observer.presentedReviewChanged(); });
}

// The one place where observers learn what the jobs and the postponed reviews have come to.
void AppModel::publishReview(const Uuid& id) {
    const auto job = jobs.find(id);
    const auto kept = postponed.find(id);
    assert(job == jobs.end() || kept == postponed.end());
    const RemoteReview* review = job != jobs.end() ? job->second.review() : nullptr;
    if (kept != postponed.end()) review = &kept->second;
    const std::string* failure = job != jobs.end() ? job->second.failure() : nullptr;
    if (review != nullptr) {
        published.reviews.insert_or_assign(id, *review);
    } else {
        published.reviews.erase(id);
    }
    if (failure != nullptr) {
        published.failures.insert_or_assign(id, *failure);
    } else {
        published.failures.erase(id);
    }
    const bool isOver = review == nullptr || (presented && review->reviewId != presented->reviewId);
    if (presented && presented->id == id && isOver) present(std::nullopt);
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
}

void AppModel::showNextReview() {
    // Ids compare as their texts do, so the same set of reviews always comes up in the same order.
    if (!presented && !published.reviews.empty()) present(published.reviews.begin()->second);
}

void AppModel::openReview(const Uuid& id) {
    const auto found = published.reviews.find(id);
    present(found == published.reviews.end() ? std::nullopt : std::optional(found->second));
}

void AppModel::closeReview() {
    if (presented) present(std::nullopt);
}

void AppModel::pauseReview(Uuid id, Uuid reviewId) {
    const auto job = jobs.find(id);
    if (job == jobs.end() || job->second.review() == nullptr || job->second.review()->reviewId != reviewId) return;
    const RemoteReview review = *job->second.review();
    try {
        pause(id);
    } catch (const std::exception& error) {
        setAlert(describe(error));
    }
    postponed.insert_or_assign(id, review);
    publishReview(id);
}

void AppModel::retryCheck(const Uuid& id) {
    stopJob(id);
    start(id);
}

void AppModel::sendAgain(const Uuid& id, Resend what) {
    if (profile(id) == nullptr) return;
    planResend(id, what);
    std::exception_ptr unsaved;
    try {
        if (stateFolder) ResendRequest(*stateFolder, id).write(what);
    } catch (const std::filesystem::filesystem_error&) {
        unsaved = std::current_exception();
    }
    if (running(id)) {
        stopJob(id);
        start(id);
    } else {
        resume(id);
    }
    if (unsaved) std::rethrow_exception(unsaved);
}

// What is sent again must be saved before the request is forgotten.
void AppModel::endResend(const Uuid& id) {
    if (resends.erase(id) == 0) return;
    try {
        persist();
        if (stateFolder) ResendRequest(*stateFolder, id).remove();
    } catch (const std::exception& error) {
        tellUnsaved({id}, describe(error)); // the next start repeats the request, which does no harm
    }
}

void AppModel::leaveMissing(const Uuid& id) {
    for (const auto& path : missing[id]) recordRemoteDate(path, leftMissing, id);
    missing.erase(id);
    publishReview(id);
    persist();
}

void AppModel::startWithoutCheck(const Uuid& id) {
    if (profile(id) == nullptr) return;
    const auto generation = [this, id] {
        const auto job = jobs.find(id);
        return job == jobs.end() ? std::nullopt : std::optional(job->second.work().generation);
    };
    withPassword(
        id,
        [this, id, generation, asked = generation()](std::string password) {
            const Profile* found = profile(id);
            if (found == nullptr || generation() != asked) return; // stopped while the password was awaited
            try {
                checkStartable(*found);
            } catch (const SyncError& error) {
                setAlert(error.what());
                return;
            }
            const auto before = jobs.find(id);
            const bool filesMayBeGone = before != jobs.end() && before->second.work().filesMayBeGone;
            stopJob(id);
            unanswered.erase(id);
            Job& job = openJob(*found);
            job.skipCheck();
            if (filesMayBeGone) job.letFilesBeGone();
            (void)job.takePassword(std::move(password));
            changeStatus(id, [](ProfileStatus& status) { status.enter(Phase::starting, ""); });
            launchWorker(id);
            log(id, "Server comparison skipped by your choice; pending local edits may replace remote copies.");
        },
        [this](const std::string& message) { setAlert(message); });
}

Decision AppModel::resolveReview(Uuid id, Uuid reviewId, const PathSet& selectedPaths) {
    if (const auto kept = postponed.find(id); kept != postponed.end() && kept->second.reviewId == reviewId) {
        // The server may have moved on since: it is checked first.
        try {
            resumeWith(id, EarlierDecision{.changes = kept->second.changes, .selected = selectedPaths});
        } catch (const std::exception& error) {
            setAlert(describe(error));
        }
        if (running(id)) return Decision::accepted;
        setAlert(status(id).detail);
        return Decision::refused;
    }
    const auto job = jobs.find(id);
    const RemoteReview* review = job == jobs.end() ? nullptr : job->second.review();
    if (review == nullptr || review->reviewId != reviewId) return Decision::outdated;
    const Decision decision = carryOut(id, selectedPaths);
    showNextReview();
    return decision;
}

// The job awaits the decision.
Decision AppModel::carryOut(const Uuid& id, const PathSet& downloads) {
    const std::vector<RemoteChange> changes = jobs.at(id).review()->changes;
    const auto dates = state.remoteDates;
    const auto synchronised = baseline(id);
    std::vector<RemoteChange> approved;
    std::vector<RemoteChange> kept;
    for (const auto& change : changes) {
        if (downloads.contains(change.path)) {
            approved.push_back(change);
        } else {
            recordRemoteDate(change.path, change.remoteDate, id);
            kept.push_back(change);
        }
    }
    if (sendsEverything(id)) forgetPublished(pathsOf(kept), id);
    try {
        persist();
    } catch (const std::exception& error) {
        state.remoteDates = dates; // what is not decided is offered again
        state.baselines[id] = synchronised;
        setAlert(describe(error));
        return Decision::refused;
    }
    acknowledgeSizes(kept, id);
    unanswered[id] = pathsOf(approved);
    if (approved.empty()) {
        launchWorker(id);
    } else {
        startReviewDownload(id, approved);
    }
    return Decision::accepted;
}

// The user keeps the local files, and these versions on the server are not offered again. Their dates are recorded, and
// saved by now; the sizes distinguish them from edits within the same second.
void AppModel::acknowledgeSizes(const std::vector<RemoteChange>& kept, const Uuid& id) {
    auto journal = journalOf(id);
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

void AppModel::startReviewDownload(const Uuid& id, const std::vector<RemoteChange>& approved) {
    changeStatus(id, [&approved](ProfileStatus& status) {
        status.enter(
            Phase::downloadingReview,
            "Replacing " + std::to_string(approved.size()) + " selected local files, with backups.");
    });
    const auto onMain = [this, id, generation = jobs.at(id).work().generation](std::function<void()> report) {
        context.post(onlyIfCurrent(id, generation, std::move(report)));
    };
    const auto body = [this, id, work = jobs.at(id).work(), approved, onMain](const std::stop_token& stop) {
        try {
            ProgressMeter meter(options.clock, eventSink(id, work.generation, stop).progress);
            meter.begin(TransferProgress::Work::downloading, approved.size());
            const auto transport = transportFor(work, meter);
            PathSet leftOut;
            transport.replaceLocal(
                approved,
                {.replaced =
                     [&](const RemoteChange& change, const Fingerprint& installed) {
                         onMain([this, id, change, installed] { recordDownload(id, change, installed); });
                         meter.fileDone();
                     },
                 .refused =
                     [&](const RemoteChange& change, const ChangedMeanwhile& refusal) {
                         leftOut.insert(change.path);
                         onMain([this, id, message = describe(refusal)] { log(id, message, Activity::Kind::failure); });
                         meter.fileDone();
                     }});
            onMain([this, id, leftOut] { finishReviewDownload(id, leftOut); });
        } catch (const Cancelled&) {
            // Stopped: what was replaced is recorded, the rest is as it was.
        } catch (const std::exception& error) {
            onMain([this, id, message = describe(error)] { failedCheck(message, id, false); });
        }
    };
    if (step(id, [&](Job& job) { return job.download([&] { return startTask(id, body); }); })) publishReview(id);
}

void AppModel::recordDownload(const Uuid& id, const RemoteChange& change, const Fingerprint& installed) {
    unanswered[id].erase(change.path);
    receive(event::Downloaded{.path = change.path, .fingerprint = installed}, id);
    receive(event::RemoteDate{.path = change.path, .date = change.remoteDate}, id);
    log(id, "Downloaded newer server copy: " + change.path + " (previous local copy backed up)",
        Activity::Kind::downloaded, change.path);
}

void AppModel::finishReviewDownload(const Uuid& id, const PathSet& leftOut) {
    if (leftOut.empty()) {
        launchWorker(id);
        return;
    }
    log(id,
        "Not downloaded, because they changed meanwhile: " + listedPaths(leftOut)
            + ". The server is checked again before anything is uploaded.",
        Activity::Kind::failure);
    startCheck(id, std::nullopt);
}

void AppModel::recordRemoteDate(const std::string& path, RemoteDate date, const Uuid& id) {
    if (!state.remoteDates) state.remoteDates.emplace();
    (*state.remoteDates)[id].set(path, date);
}

} // namespace zembrastel
