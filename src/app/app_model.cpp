#include "app/app_model.h"

#include "app/demo.h"
#include "model/error.h"
#include "platform/private_folder.h"
#include "sync/sync_worker.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <ranges>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

bool isSameFolder(const std::string& a, const std::string& b) {
    std::error_code ignored; // a folder that is not there is the same as none but by its text
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace

std::string listedPaths(const PathSet& paths) {
    constexpr std::size_t most = 10;
    std::string text;
    for (const auto& path : paths | std::views::take(most)) text += (text.empty() ? "" : ", ") + path;
    return paths.size() > most ? text + " and " + std::to_string(paths.size() - most) + " more" : text;
}

std::string loadFailure(const std::exception& error) {
    return "Could not load saved profiles: " + describe(error) + ". Your saved file has been left untouched.";
}

AppModel::AppModel(MainContext& mainContext, Options chosen)
    : context(mainContext), options(std::move(chosen)), jobWork(options.demo ? demoWork(options.clock) : options.work),
      passwords(options.sessionPasswords), privateItems(options.privateItems), passwordCalls(mainContext),
      tasks(mainContext) {
    if (options.demo) {
        addSampleProfile();
        return;
    }
    removeStalePrivateFolders();
    try {
        if (options.storeFailure) std::rethrow_exception(options.storeFailure);
        StateStore opened = options.storeOverride ? *options.storeOverride : StateStore();
        for (auto& item : opened.privateItems()) privateItems.push_back(std::move(item));
        state = opened.load();
        stateFolder = opened.folder();
        for (const auto& each : state.profiles) {
            if (const auto what = ResendRequest(*stateFolder, each.id).read()) resends.emplace(each.id, *what);
        }
        saver.emplace(
            context, options.clock, std::move(opened), state,
            [this](const std::set<Uuid>& ids, const std::string& message) { tellUnsaved(ids, message); });
    } catch (const std::exception& error) {
        alertText = loadFailure(error);
    }
    if (!state.profiles.empty()) selected = state.profiles.front().id;
}

AppModel::~AppModel() {
    observers.clear();
    shutdown();
    tasks.stopAll();
}

void AppModel::addSampleProfile() {
    const Profile& sample = state.profiles.emplace_back(sampleProfile());
    selected = sample.id;
    statuses[sample.id] = samplePast(options.clock.now());
}

const Profile* AppModel::profile(const Uuid& id) const {
    const auto found = std::find_if(
        state.profiles.begin(), state.profiles.end(), [&id](const Profile& candidate) { return candidate.id == id; });
    return found == state.profiles.end() ? nullptr : &*found;
}

Profile* AppModel::find(const Uuid& id) { return const_cast<Profile*>(std::as_const(*this).profile(id)); }

const ProfileStatus& AppModel::status(const Uuid& id) const {
    static const ProfileStatus unstarted;
    const auto found = statuses.find(id);
    return found == statuses.end() ? unstarted : found->second;
}

const PathSet& AppModel::missingOnServer(const Uuid& id) const {
    static const PathSet none;
    const auto found = missing.find(id);
    return found == missing.end() ? none : found->second;
}

const FileMap& AppModel::baseline(const Uuid& id) const {
    static const FileMap none;
    const auto found = state.baselines.find(id);
    return found == state.baselines.end() ? none : found->second;
}

const RemoteDates& AppModel::remoteDates(const Uuid& id) const {
    static const RemoteDates none;
    if (!state.remoteDates) return none;
    const auto found = state.remoteDates->find(id);
    return found == state.remoteDates->end() ? none : found->second;
}

std::optional<PublishJournal> AppModel::journalOf(const Uuid& id) const {
    return stateFolder ? std::optional(PublishJournal(*stateFolder, id)) : std::nullopt;
}

void AppModel::select(std::optional<Uuid> id) {
    if (selected == id) return;
    selected = id;
    notify([](ModelObserver& observer) { observer.selectionChanged(); });
}

void AppModel::setAlert(std::string text) {
    alertText = std::move(text);
    notify([](ModelObserver& observer) { observer.alertChanged(); });
}

void AppModel::dismissAlert() {
    alertText.reset();
    notify([](ModelObserver& observer) { observer.alertChanged(); });
}

void AppModel::notify(const std::function<void(ModelObserver&)>& tell) const {
    for (auto* observer : observers) tell(*observer);
}

void AppModel::changeStatus(const Uuid& id, const std::function<void(ProfileStatus&)>& change) {
    ProfileStatus& status = statuses[id];
    change(status);
    notify([&id](ModelObserver& observer) { observer.statusChanged(id); });
}

void AppModel::log(const Uuid& id, std::string text, Activity::Kind kind, std::string path) {
    auto& activity = statuses[id].activity;
    activity.push_front({.date = options.clock.now(), .text = std::move(text), .kind = kind, .path = std::move(path)});
    if (activity.size() > ProfileStatus::mostActivities) activity.pop_back();
    notify([&](ModelObserver& observer) { observer.activityLogged(id, activity.front()); });
}

void AppModel::withPassword(
    const Uuid& id, std::function<void(std::string)> then, std::function<void(std::string)> failed) {
    if (const auto known = passwords.find(id); known != passwords.end()) {
        then(std::string(known->second));
        return;
    }
    if (options.demo) {
        then({});
        return;
    }
    passwordCalls.ask(
        [read = options.passwordAccess.read, id] { return read(id); },
        [weak = std::weak_ptr(self), id, then = std::move(then),
         failed = std::move(failed)](const PasswordCalls::Result& result) {
            const auto alive = weak.lock();
            if (!alive) return;
            // One that was kept for the session meanwhile is newer than the answer.
            auto& known = (*alive)->passwords;
            if (!result.failure) known.try_emplace(id, result.password);
            if (const auto found = known.find(id); found != known.end()) {
                then(std::string(found->second));
            } else {
                failed(*result.failure);
            }
        });
}

void AppModel::storePassword(
    const Uuid& id, const std::string& password, std::function<void(std::optional<std::string>)> done) {
    if (options.demo) {
        done(std::nullopt);
        return;
    }
    passwordCalls.ask(
        [save = options.passwordAccess.save, id, password] {
            save(password, id);
            return password;
        },
        [weak = std::weak_ptr(self), done = std::move(done)](const PasswordCalls::Result& result) {
            if (weak.expired()) return;
            done(result.failure);
        });
}

void AppModel::removeStrayPassword(const Uuid& id) {
    if (options.demo || profile(id) != nullptr) return;
    passwordCalls.ask(
        [removePassword = options.passwordAccess.remove, id] {
            removePassword(id);
            return std::string();
        },
        [weak = std::weak_ptr(self)](const PasswordCalls::Result& result) {
            const auto alive = weak.lock();
            if (alive && result.failure) (*alive)->setAlert(*result.failure);
        });
}

bool AppModel::watching(const Uuid& id) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && (job->second.is<Job::Watching>() || job->second.is<Job::InitialDownload>());
}

bool AppModel::isCurrent(const Uuid& id, const Uuid& generation) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && job->second.work().generation == generation;
}

std::function<void()> AppModel::onlyIfCurrent(const Uuid& id, const Uuid& generation, std::function<void()> work) {
    return [weak = std::weak_ptr(self), id, generation, work = std::move(work)] {
        if (const auto alive = weak.lock(); alive && (*alive)->isCurrent(id, generation)) work();
    };
}

const Profile* AppModel::runningProfileWithFolder(const Uuid& except, const std::string& localFolder) const {
    const auto found = std::find_if(state.profiles.begin(), state.profiles.end(), [&](const Profile& other) {
        return other.id != except && running(other.id) && isSameFolder(other.localFolder, localFolder);
    });
    return found == state.profiles.end() ? nullptr : &*found;
}

void AppModel::checkStartable(const Profile& profile) const {
    profile.validateDownloadSelection();
    if (profile.hasEmptySyncSelection()) {
        throw SyncError("No files or folders are selected. Use Edit sync contents to choose what to sync.");
    }
    if (runningProfileWithFolder(profile.id, profile.localFolder) != nullptr) {
        throw SyncError("This folder is already being watched by another profile.");
    }
}

void AppModel::refuseStart(const Uuid& id, const std::string& message) {
    Profile* refused = find(id);
    if (refused == nullptr) return;
    const bool lacksDownload = refused->requiresDownloadSelection();
    changeStatus(
        id, [&](ProfileStatus& status) { status.enter(lacksDownload ? Phase::unchosen : Phase::stopped, message); });
    if (!lacksDownload && !refused->hasEmptySyncSelection()) return;
    // Nothing but an edit can cure these: the profile must not start again by itself.
    refused->enabled = false;
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    persistFor(id);
}

void AppModel::start(const Uuid& id) { startWith(id, std::nullopt); }

Job& AppModel::openJob(const Profile& profile) {
    assert(!jobs.contains(profile.id));
    postponed.erase(profile.id);
    auto& traits = serverTraits[profile.id];
    if (!traits && stateFolder) {
        traits = std::make_shared<ServerTraits>(TemporaryJournal(*stateFolder, profile.id));
    } else if (!traits) {
        traits = std::make_shared<ServerTraits>();
    }
    return jobs.emplace(profile.id, Job(profile, traits)).first->second;
}

void AppModel::forgetMissingFiles(const Uuid& id) {
    if (!status(id).filesMissing()) return;
    stopJob(id);
    startWith(id, std::nullopt, true);
}

void AppModel::startWith(const Uuid& id, const Earlier& earlier, bool filesMayBeGone) {
    const Profile* found = profile(id);
    if (running(id) || found == nullptr) return;
    try {
        checkStartable(*found);
    } catch (const SyncError& error) {
        refuseStart(id, error.what());
        return;
    }
    Job& job = openJob(*found);
    if (filesMayBeGone) job.letFilesBeGone();
    const Uuid generation = job.work().generation;
    publishReview(id);
    changeStatus(id, [](ProfileStatus& status) { status.enter(Phase::starting, ""); });
    withPassword(
        id,
        [this, id, generation, earlier](std::string password) {
            if (!isCurrent(id, generation) || !jobs.at(id).takePassword(std::move(password))) return;
            if (jobs.at(id).work().profile.needsDownload) {
                launchWorker(id);
            } else {
                startCheck(id, earlier);
            }
        },
        [this, id, generation](const std::string& message) {
            if (!isCurrent(id, generation)) return;
            stopJob(id);
            refuseStart(id, message);
        });
}

void AppModel::startEnabled() {
    for (const auto& candidate : std::vector<Profile>(profiles())) {
        if (candidate.enabled) start(candidate.id);
    }
}

// Takes a step of the profile's job. False when the job is in no state for it, or the thread for it cannot be had,
// which ends the job.
bool AppModel::step(const Uuid& id, const std::function<bool(Job&)>& take) {
    try {
        return take(jobs.at(id));
    } catch (const std::system_error& error) {
        stopJob(id);
        refuseStart(id, describe(error));
        return false;
    }
}

// Starts a task of the profile's job. It begins when the task before it has ended, see task_lane.h.
std::stop_source AppModel::startTask(const Uuid& id, BackgroundTasks::Body body) {
    auto& lane = lanes[id];
    if (!lane) lane = std::make_shared<TaskLane>();
    return tasks.start([lane = lane, body = std::move(body)](const std::stop_token& stop) { lane->run(body, stop); });
}

EventSink AppModel::eventSink(const Uuid& id, const Uuid& generation, const std::stop_token& stop) {
    auto applying = [weak = std::weak_ptr(self), id, generation](WorkerEvent event) {
        return [weak, id, generation, event = std::move(event)] {
            const auto alive = weak.lock();
            if (alive && (*alive)->isCurrent(id, generation)) (*alive)->receive(event, id);
        };
    };
    auto takingProgress = [weak = std::weak_ptr(self), id, generation](const TransferProgress& progress) {
        const auto alive = weak.lock();
        if (alive && (*alive)->isCurrent(id, generation)) (*alive)->takeProgress(progress, id);
    };
    return {
        .deliver = [&main = context, stop,
                    applying](WorkerEvent event) { runOnMain(main, stop, applying(std::move(event))); },
        .post = [&main = context, applying](WorkerEvent event) { main.post(applying(std::move(event))); },
        .progress =
            [&main = context, takingProgress,
             waiting = std::make_shared<std::atomic_flag>()](const TransferProgress& progress) {
                if (waiting->test_and_set()) return;
                main.post([takingProgress, waiting, progress] {
                    waiting->clear();
                    takingProgress(progress);
                });
            }};
}

void AppModel::launchWorker(const Uuid& id) {
    if (!options.watches) {
        endInsteadOfWatching(id);
        return;
    }
    const bool downloads = jobs.at(id).work().profile.needsDownload;
    forgetPublished(jobs.at(id).work().toSend, id);
    const bool begun = step(id, [&](Job& job) {
        const auto start = [&] {
            return startTask(
                id, [this, work = job.work(), files = baseline(id), dates = remoteDates(id),
                     journal = journalOf(id)](const std::stop_token& stop) {
                    const SyncWorker worker{
                        .profile = work.profile,
                        .password = work.password,
                        .control = work.control,
                        .initialBaseline = files,
                        .events = eventSink(work.profile.id, work.generation, stop),
                        .clock = options.clock,
                        .retryWait = work.retryWait,
                        .traits = work.traits,
                        .seen = work.seen,
                        .recordedDates = dates,
                        .mayReplaceUnseen = work.checkSkipped,
                        .journal = journal,
                        .privateItems = privateItems,
                        .filesMayBeGone = work.filesMayBeGone};
                    jobWork.watch(worker, stop);
                });
        };
        return downloads ? job.downloadInitially(start) : job.watch(start);
    });
    if (!begun) return;
    disputed.erase(id);
    if (!downloads && !jobs.at(id).work().checkSkipped) endResend(id);
    if (status(id).failed()) showChecking(id); // the check has succeeded since
    publishReview(id);
    log(id, downloads ? "Starting initial server download." : "Watching started.");
}

void AppModel::endInsteadOfWatching(const Uuid& id) {
    stopJob(id);
    changeStatus(id, [](ProfileStatus& status) { status.enter(Phase::paused, ProfileStatus().detail); });
}

void AppModel::stopJob(const Uuid& id) {
    if (auto job = jobs.extract(id); !job.empty()) job.mapped().end();
    postponed.erase(id);
    publishReview(id);
}

void AppModel::retryNow() {
    for (const auto& [id, job] : jobs) job.work().retryWait->wake();
}

void AppModel::shutdown() {
    std::vector<Uuid> ids;
    for (const auto& [id, job] : jobs) ids.push_back(id);
    for (const auto& id : ids) stopJob(id);
    if (saver) saver->flush();
}

} // namespace zembrastel
