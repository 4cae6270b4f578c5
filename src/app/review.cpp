// The server check before watching starts, and the review of what it finds.
#include "app/app_model.h"
#include "model/error.h"
#include "platform/text.h"
#include "sync/progress_meter.h"
#include "sync/sync_worker.h"
#include "transport/ftp_transport.h"

#include <algorithm>

namespace zembrastel {
namespace {

FTPTransport transportFor(
    const Profile& profile, const std::string& password, const std::shared_ptr<TransferControl>& control,
    ProgressMeter& meter) {
    return {.profile = profile, .password = password, .control = control, .observer = &meter};
}

} // namespace

void AppModel::startCheck(const Assignment& work) {
    const Uuid id = work.profile.id;
    changeStatus(id, [](ProfileStatus& status) {
        status.title = "Checking server";
        status.detail = "Comparing server dates before any local changes upload…";
    });
    log(id, "Checking for newer server files before watching resumes.");
    const auto found = [this, work](const std::vector<RemoteChange>& changes) {
        context.post(
            onlyIfCurrent(work.profile.id, work.generation, [this, work, changes] { finishCheck(changes, work); }));
    };
    const auto failed = [this, id, generation = work.generation](const std::string& message) {
        context.post(onlyIfCurrent(id, generation, [this, id, message] { failedCheck(message, id, true); }));
    };
    runAsJob(
        work,
        [this, id, work, found, failed, files = baseline(id), dates = remoteDates(id)](const std::stop_token& stop) {
            ProgressMeter meter(options.clock, eventSink(id, work.generation, stop).progress);
            while (!stop.stop_requested()) {
                try {
                    meter.begin(TransferProgress::Work::comparing);
                    const auto transport = transportFor(work.profile, work.password, work.control, meter);
                    const auto changes = jobWork.check(transport, files, dates, stop);
                    work.control->check();
                    found(changes);
                    return;
                } catch (const Cancelled&) {
                    return;
                } catch (const std::exception& error) {
                    failed(describe(error));
                }
                if (!work.retryWait->sleep(options.clock, stop)) return;
            }
        });
}

void AppModel::finishCheck(const std::vector<RemoteChange>& changes, const Assignment& work) {
    const Uuid& id = work.profile.id;
    failures.erase(id);
    if (changes.empty()) {
        launchWorker(work);
        return;
    }
    const std::string count = std::to_string(changes.size());
    pendingReviews.insert_or_assign(id, RemoteReview{.id = id, .changes = changes});
    changeStatus(id, [&count](ProfileStatus& status) {
        status.failed = false;
        status.title = "Review remote changes";
        status.detail =
            count + " newer server files found. Uploads are paused until you choose which versions to keep.";
    });
    log(id, "Found " + count + " newer server files. Waiting for your review.");
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
    showNextReview();
}

void AppModel::failedCheck(const std::string& message, const Uuid& id, bool willRetry) {
    failures.insert_or_assign(id, message);
    changeStatus(id, [&](ProfileStatus& status) {
        status.title = "Server check needs attention";
        status.detail = sentence(message)
                        + (willRetry ? " Uploads remain paused; the check will retry automatically."
                                     : " Uploads remain paused. Retry the server check to review the latest versions.");
        status.failed = true;
    });
    log(id, message, true);
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
}

void AppModel::present(std::optional<RemoteReview> review) {
    presented = std::move(review);
    notify([](ModelObserver& observer) { observer.presentedReviewChanged(); });
}

void AppModel::showNextReview() {
    // Ids compare as their texts do, so the same set of reviews always comes up in the same order.
    if (!presented && !pendingReviews.empty()) present(pendingReviews.begin()->second);
}

void AppModel::openReview(const Uuid& id) {
    const auto found = pendingReviews.find(id);
    present(found == pendingReviews.end() ? std::nullopt : std::optional(found->second));
}

void AppModel::closeReview() {
    if (presented) present(std::nullopt);
}

void AppModel::dropReview(const Uuid& id) {
    pendingReviews.erase(id);
    if (presented && presented->id == id) present(std::nullopt);
}

void AppModel::pauseReview(const Uuid& id) {
    if (!running(id)) return;
    // Stopping drops the review; this pause is meant to keep it for later.
    auto kept = pendingReviews.extract(id);
    try {
        toggle(id);
    } catch (const std::exception& error) {
        setAlert(describe(error));
    }
    if (!kept.empty()) pendingReviews.insert(std::move(kept));
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
}

void AppModel::retryCheck(const Uuid& id) {
    stopJob(id);
    start(id);
}

void AppModel::startWithoutCheck(const Uuid& id) {
    if (profile(id) == nullptr) return;
    const auto generation = [this, id] {
        const auto job = jobs.find(id);
        return job == jobs.end() ? std::nullopt : std::optional(job->second.generation);
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
            stopJob(id);
            Assignment work = assign(*found);
            work.password = std::move(password);
            launchWorker(work);
            log(id, "Server comparison skipped by your choice; pending local edits may replace remote copies.");
        },
        [this](const std::string& message) { setAlert(message); });
}

void AppModel::resolveReview(const Uuid& id, const std::set<std::string, std::less<>>& selectedPaths) {
    const auto review = pendingReviews.find(id);
    const Profile* found = profile(id);
    if (review == pendingReviews.end() || found == nullptr) return;
    const auto job = jobs.find(id);
    if (job == jobs.end()) {
        // Kept from before a pause: the server may have moved on, so it is looked at afresh.
        dropReview(id);
        start(id);
        return;
    }
    Assignment work{
        .profile = *found,
        .password = {},
        .generation = job->second.generation,
        .control = job->second.control,
        .retryWait = job->second.retryWait};
    std::vector<RemoteChange> approved;
    try {
        work.password = password(id);
        for (const auto& change : review->second.changes) {
            if (selectedPaths.contains(change.path)) {
                approved.push_back(change);
            } else {
                recordRemoteDate(change.path, change.remoteDate, id);
            }
        }
        persist();
    } catch (const std::exception& error) {
        setAlert(describe(error));
        return;
    }
    dropReview(id);
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
    if (approved.empty()) {
        launchWorker(work);
    } else {
        startReviewDownload(work, approved);
    }
    showNextReview();
}

void AppModel::startReviewDownload(const Assignment& work, const std::vector<RemoteChange>& approved) {
    const Uuid id = work.profile.id;
    changeStatus(id, [&approved](ProfileStatus& status) {
        status.title = "Downloading server changes";
        status.detail = "Replacing " + std::to_string(approved.size()) + " selected local files, with backups.";
    });
    const auto onMain = [this, id, generation = work.generation](std::function<void()> step) {
        context.post(onlyIfCurrent(id, generation, std::move(step)));
    };
    runAsJob(work, [this, id, work, approved, onMain](const std::stop_token& stop) {
        try {
            ProgressMeter meter(options.clock, eventSink(id, work.generation, stop).progress);
            meter.begin(TransferProgress::Work::downloading, approved.size());
            const auto transport = transportFor(work.profile, work.password, work.control, meter);
            for (const auto& change : approved) {
                work.control->check();
                const Fingerprint installed = transport.replaceLocal(change);
                meter.fileDone();
                onMain([this, id, change, installed] {
                    receive(event::Downloaded{.path = change.path, .fingerprint = installed}, id);
                    receive(event::RemoteDate{.path = change.path, .date = change.remoteDate}, id);
                    log(id, "Downloaded newer server copy: " + change.path + " (previous local copy backed up)");
                });
            }
            onMain([this, work] { launchWorker(work); });
        } catch (const Cancelled&) {
            // Stopped: what was replaced is recorded, the rest is as it was.
        } catch (const std::exception& error) {
            onMain([this, id, message = describe(error)] { failedCheck(message, id, false); });
        }
    });
}

void AppModel::recordRemoteDate(const std::string& path, RemoteDate date, const Uuid& id) {
    if (!state.remoteDates) state.remoteDates.emplace();
    (*state.remoteDates)[id].set(path, date);
}

} // namespace zembrastel
