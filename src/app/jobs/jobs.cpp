#include "app/jobs/jobs.h"

#include "model/error.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

bool isSameFolder(const std::string& a, const std::string& b) {
    std::error_code ignored; // a folder that does not exist has only its text
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace

void Jobs::keepPrivate(std::vector<PrivateItem> items) {
    for (auto& item : items) settings.privateItems.push_back(std::move(item));
}

bool Jobs::watching(const Uuid& id) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && (job->second.is<Job::Watching>() || job->second.is<Job::InitialDownload>());
}

const Profile* Jobs::runningInFolder(const std::string& localFolder, const Uuid& except) const {
    const auto& profiles = parts.records.profiles();
    const auto found = std::ranges::find_if(profiles, [&](const Profile& other) {
        return other.id != except && running(other.id) && isSameFolder(other.localFolder, localFolder);
    });
    return found == profiles.end() ? nullptr : &*found;
}

const RemoteReview* Jobs::review(const Uuid& id) const {
    const auto job = jobs.find(id);
    return job == jobs.end() ? nullptr : job->second.review();
}

bool Jobs::isCurrent(const Uuid& id, const Uuid& generation) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && job->second.work().generation == generation;
}

std::function<void()> Jobs::ifCurrent(const Uuid& id, const Uuid& generation, std::function<void()> work) const {
    return lifetime.guard([this, id, generation, work = std::move(work)] {
        if (isCurrent(id, generation)) work();
    });
}

void Jobs::checkStartable(const Profile& profile) const {
    profile.validateDownloadSelection();
    if (profile.hasEmptySyncSelection()) {
        throw SyncError("No files or folders are selected. Use Edit sync contents to choose what to sync.");
    }
    if (runningInFolder(profile.localFolder, profile.id) != nullptr) {
        throw SyncError("This folder is already being watched by another profile.");
    }
}

void Jobs::refuse(const Uuid& id, const std::string& message) {
    Profile* refused = parts.records.find(id);
    if (refused == nullptr) return;
    const bool lacksDownload = refused->requiresDownloadSelection();
    parts.statuses.enter(id, lacksDownload ? Phase::unchosen : Phase::stopped, message);
    if (!lacksDownload && !refused->hasEmptySyncSelection()) return;
    // Only an edit of the profile helps: it must not start again by itself.
    refused->enabled = false;
    parts.observers.notify([](ModelObserver& observer) { observer.profilesChanged(); });
    parts.records.persistFor(id);
}

Job& Jobs::open(const Profile& profile) {
    assert(!jobs.contains(profile.id));
    parts.reviews.dropPostponed(profile.id);
    auto& traits = serverTraits[profile.id];
    const auto& folder = parts.records.folder();
    if (!traits && folder) {
        traits = std::make_shared<ServerTraits>(TemporaryJournal(*folder, profile.id));
    } else if (!traits) {
        traits = std::make_shared<ServerTraits>();
    }
    return jobs.emplace(profile.id, Job(profile, traits)).first->second;
}

void Jobs::start(const Uuid& id, const Earlier& earlier, bool filesMayBeGone) {
    const Profile* found = parts.records.profile(id);
    if (running(id) || found == nullptr) return;
    try {
        checkStartable(*found);
    } catch (const SyncError& error) {
        refuse(id, error.what());
        return;
    }
    Job& job = open(*found);
    if (filesMayBeGone) job.letFilesBeGone();
    const Uuid generation = job.work().generation;
    publishReview(id);
    parts.statuses.enter(id, Phase::starting, "");
    parts.passwords.read(
        id,
        [this, id, generation, earlier](std::string password) {
            if (isCurrent(id, generation)) begin(id, earlier, std::move(password));
        },
        [this, id, generation](const std::string& message) {
            if (!isCurrent(id, generation)) return;
            stop(id);
            refuse(id, message);
        });
}

void Jobs::begin(const Uuid& id, const Earlier& earlier, std::string password) {
    Job& job = jobs.at(id);
    if (!job.takePassword(std::move(password))) return;
    if (job.work().profile.needsDownload) {
        launchWorker(id);
    } else {
        startCheck(id, earlier);
    }
}

void Jobs::startWithoutCheck(const Uuid& id) {
    const auto generation = [this, id] {
        const auto job = jobs.find(id);
        return job == jobs.end() ? std::nullopt : std::optional(job->second.work().generation);
    };
    parts.passwords.read(
        id,
        [this, id, generation, asked = generation()](std::string password) {
            const Profile* found = parts.records.profile(id);
            if (found == nullptr || generation() != asked) return; // stopped while the password was read
            try {
                checkStartable(*found);
            } catch (const SyncError& error) {
                parts.alert(error.what());
                return;
            }
            beginWithoutCheck(id, std::move(password));
        },
        parts.alert);
}

void Jobs::beginWithoutCheck(const Uuid& id, std::string password) {
    const auto before = jobs.find(id);
    const bool filesMayBeGone = before != jobs.end() && before->second.work().filesMayBeGone;
    stop(id);
    parts.reviews.unsettled(id).unanswered.clear();
    Job& job = open(*parts.records.profile(id));
    job.skipCheck();
    if (filesMayBeGone) job.letFilesBeGone();
    (void)job.takePassword(std::move(password));
    parts.statuses.enter(id, Phase::starting, "");
    launchWorker(id);
    parts.statuses.log(id, "Server comparison skipped by your choice; pending local edits may replace remote copies.");
}

// Takes a step of the profile's job. False if the job is in no state for it, or if there is no thread for it, which
// ends the job.
bool Jobs::step(const Uuid& id, const std::function<bool(Job&)>& take) {
    try {
        return take(jobs.at(id));
    } catch (const std::system_error& error) {
        stop(id);
        refuse(id, describe(error));
        return false;
    }
}

// Starts a task of the profile's job. It begins when the task before it has ended, see TaskLane.
std::stop_source Jobs::startTask(const Uuid& id, BackgroundTasks::Body body) {
    auto& lane = lanes[id];
    if (!lane) lane = std::make_shared<TaskLane>();
    return tasks.start([lane = lane, body = std::move(body)](const std::stop_token& stop) { lane->run(body, stop); });
}

EventSink Jobs::eventSink(const Uuid& id, const Uuid& generation, const std::stop_token& stop) {
    auto applying = [this, id, generation](WorkerEvent event) {
        return ifCurrent(id, generation, [this, id, event = std::move(event)] { receive(event, id); });
    };
    const auto showing = [this, id, generation](const TransferProgress& progress) {
        return ifCurrent(id, generation, [this, id, progress] { parts.statuses.showProgress(id, progress); });
    };
    return {
        .deliver = [&main = parts.context, stop,
                    applying](WorkerEvent event) { runOnMain(main, stop, applying(std::move(event))); },
        .post = [&main = parts.context, applying](WorkerEvent event) { main.post(applying(std::move(event))); },
        .progress =
            [&main = parts.context, showing,
             waiting = std::make_shared<std::atomic_flag>()](const TransferProgress& progress) {
                if (waiting->test_and_set()) return;
                main.post([show = showing(progress), waiting] {
                    waiting->clear();
                    show();
                });
            }};
}

SyncWorker Jobs::workerFor(const Uuid& id) {
    const Assignment& work = jobs.at(id).work();
    return {
        .profile = work.profile,
        .password = work.password,
        .control = work.control,
        .initialBaseline = parts.records.baseline(id),
        .events = {}, // with the stop token of its task
        .clock = parts.clock,
        .retryWait = work.retryWait,
        .traits = work.traits,
        .seen = work.seen,
        .recordedDates = parts.records.remoteDates(id),
        .mayReplaceUnseen = work.checkSkipped,
        .journal = parts.records.journal(id),
        .contents = parts.records.contents(work.profile),
        .privateItems = settings.privateItems,
        .filesMayBeGone = work.filesMayBeGone};
}

void Jobs::launchWorker(const Uuid& id) {
    if (!settings.watches) {
        finishWithoutWatching(id);
        return;
    }
    const bool downloads = jobs.at(id).work().profile.needsDownload;
    parts.records.forgetFiles(id, jobs.at(id).work().toSend);
    const bool begun = step(id, [&](Job& job) {
        const auto start = [&] {
            return startTask(
                id, [this, id, generation = job.work().generation,
                     worker = workerFor(id)](const std::stop_token& stop) mutable {
                    worker.events = eventSink(id, generation, stop);
                    settings.work.watch(worker, stop);
                });
        };
        return downloads ? job.downloadInitially(start) : job.watch(start);
    });
    if (!begun) return;
    parts.reviews.unsettled(id).disputed.clear();
    if (!downloads && !jobs.at(id).work().checkSkipped) endResend(id);
    if (parts.statuses.of(id).failed()) showChecking(id); // the check has succeeded since
    publishReview(id);
    parts.statuses.log(id, downloads ? "Starting initial server download." : "Watching started.");
}

void Jobs::finishWithoutWatching(const Uuid& id) {
    stop(id);
    parts.statuses.enterPaused(id);
}

void Jobs::stop(const Uuid& id) {
    if (auto job = jobs.extract(id); !job.empty()) job.mapped().end();
    parts.reviews.dropPostponed(id);
    publishReview(id);
}

void Jobs::stopAll() {
    while (!jobs.empty()) stop(Uuid(jobs.begin()->first));
}

void Jobs::retryNow() {
    for (const auto& [id, job] : jobs) job.work().retryWait->wake();
}

void Jobs::retryNow(const Uuid& id) {
    if (const auto job = jobs.find(id); job != jobs.end()) job->second.work().retryWait->wake();
}

void Jobs::retryFile(const Uuid& id, const std::string& path) {
    if (const auto job = jobs.find(id); job != jobs.end()) job->second.work().retryWait->wake(path);
}

void Jobs::publishReview(const Uuid& id) {
    const auto job = jobs.find(id);
    assert(job == jobs.end() || parts.reviews.postponed(id) == nullptr);
    if (job == jobs.end()) {
        parts.reviews.publish(id, nullptr, nullptr);
    } else {
        parts.reviews.publish(id, job->second.review(), job->second.failure());
    }
}

} // namespace zembrastel
