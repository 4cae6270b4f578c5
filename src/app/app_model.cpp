#include "app/app_model.h"

#include "app/demo.h"
#include "model/error.h"
#include "platform/private_folder.h"
#include "sync/sync_worker.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

bool isSameFolder(const std::string& a, const std::string& b) {
    std::error_code ignored; // a folder that is not there is the same as none but by its text
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace

std::string loadFailure(const std::exception& error) {
    return "Could not load saved profiles: " + describe(error) + ". Your saved file has been left untouched.";
}

AppModel::AppModel(MainContext& mainContext, Options chosen)
    : context(mainContext), options(std::move(chosen)), jobWork(options.demo ? demoWork(options.clock) : options.work),
      passwords(options.sessionPasswords), passwordCalls(mainContext), tasks(mainContext) {
    if (options.demo) {
        addSampleProfile();
        return;
    }
    removeStalePrivateFolders();
    try {
        StateStore opened = options.storeOverride ? *options.storeOverride : StateStore();
        state = opened.load();
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
    const std::string before = status.title;
    status.filesMissing = false; // holds for the status that says so, and no longer
    change(status);
    if (status.title != before) status.progress.reset();
    notify([&id](ModelObserver& observer) { observer.statusChanged(id); });
}

void AppModel::log(const Uuid& id, std::string text, bool error) {
    auto& activity = statuses[id].activity;
    activity.push_front({.date = options.clock.now(), .text = std::move(text), .error = error});
    if (activity.size() > ProfileStatus::mostActivities) activity.pop_back();
    notify([&](ModelObserver& observer) { observer.activityLogged(id, activity.front()); });
}

std::string AppModel::password(const Uuid& id) {
    const auto cached = passwords.find(id);
    if (cached != passwords.end()) return cached->second;
    return passwords.emplace(id, options.passwordAccess.read(id)).first->second;
}

void AppModel::withPassword(
    const Uuid& id, std::function<void(std::string)> then, std::function<void(std::string)> failed) {
    if (passwords.contains(id)) {
        then(password(id));
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
            if (result.failure) {
                failed(*result.failure);
            } else {
                (*alive)->passwords.insert_or_assign(id, result.password);
                then(result.password);
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

bool AppModel::watching(const Uuid& id) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && job->second.watching;
}

bool AppModel::isCurrent(const Uuid& id, const Uuid& generation) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && job->second.generation == generation;
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
    changeStatus(id, [&](ProfileStatus& status) {
        status.active = false;
        status.failed = true;
        status.title = lacksDownload ? "Choose download contents" : "Needs attention";
        status.detail = message;
    });
    if (!lacksDownload && !refused->hasEmptySyncSelection()) return;
    // Nothing but an edit can cure these: the profile must not start again by itself.
    refused->enabled = false;
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    persistFor(id);
}

AppModel::Assignment AppModel::assign(const Profile& profile) {
    return {
        .profile = profile,
        .password = {},
        .generation = Uuid::random(),
        .control = std::make_shared<TransferControl>(),
        .retryWait = std::make_shared<RetryWait>()};
}

void AppModel::start(const Uuid& id) { start(id, false); }

void AppModel::forgetMissingFiles(const Uuid& id) {
    if (!status(id).filesMissing) return;
    stopJob(id);
    start(id, true);
}

void AppModel::start(const Uuid& id, bool filesMayBeGone) {
    const Profile* found = profile(id);
    if (running(id) || found == nullptr) return;
    try {
        checkStartable(*found);
    } catch (const SyncError& error) {
        refuseStart(id, error.what());
        return;
    }
    Assignment work = assign(*found);
    work.filesMayBeGone = filesMayBeGone;
    jobs.insert_or_assign(
        id, Job{.generation = work.generation, .task = {}, .control = work.control, .retryWait = work.retryWait});
    failures.erase(id);
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
    changeStatus(id, [](ProfileStatus& status) {
        status.active = true;
        status.failed = false;
        status.title = "Starting";
        status.detail.clear();
    });
    withPassword(
        id,
        [this, work](std::string password) mutable {
            if (!isCurrent(work.profile.id, work.generation)) return;
            work.password = std::move(password);
            begin(work);
        },
        [this, id, generation = work.generation](const std::string& message) {
            if (!isCurrent(id, generation)) return;
            jobs.erase(id);
            refuseStart(id, message);
        });
}

void AppModel::startEnabled() {
    for (const auto& candidate : std::vector<Profile>(profiles())) {
        if (candidate.enabled) start(candidate.id);
    }
}

void AppModel::begin(const Assignment& work) {
    if (work.profile.needsDownload) {
        launchWorker(work);
    } else {
        startCheck(work);
    }
}

void AppModel::runAsJob(const Assignment& work, BackgroundTasks::Body body) {
    const Uuid& id = work.profile.id;
    try {
        jobs.insert_or_assign(
            id, Job{.generation = work.generation,
                    .task = tasks.start(std::move(body)),
                    .control = work.control,
                    .retryWait = work.retryWait});
    } catch (const std::system_error& error) {
        stopJob(id);
        refuseStart(id, describe(error));
    }
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

void AppModel::launchWorker(const Assignment& work) {
    const Uuid id = work.profile.id;
    if (!options.watches) {
        endInsteadOfWatching(id);
        return;
    }
    runAsJob(work, [this, work, files = baseline(id)](const std::stop_token& stop) {
        const SyncWorker worker{
            .profile = work.profile,
            .password = work.password,
            .control = work.control,
            .initialBaseline = files,
            .events = eventSink(work.profile.id, work.generation, stop),
            .clock = options.clock,
            .retryWait = work.retryWait,
            .filesMayBeGone = work.filesMayBeGone};
        jobWork.watch(worker, stop);
    });
    if (!running(id)) return;
    jobs.at(id).watching = true;
    changeStatus(id, [](ProfileStatus& status) {
        status.active = true;
        status.failed = false;
    });
    failures.erase(id);
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
    log(id, work.profile.needsDownload ? "Starting initial server download." : "Watching started.");
}

void AppModel::endInsteadOfWatching(const Uuid& id) {
    stopJob(id);
    changeStatus(id, [](ProfileStatus& status) {
        const ProfileStatus unstarted;
        status.active = false;
        status.failed = false;
        status.title = unstarted.title;
        status.detail = unstarted.detail;
    });
}

void AppModel::stopJob(const Uuid& id) {
    if (auto job = jobs.extract(id); !job.empty()) {
        job.mapped().task.request_stop();
        job.mapped().control->cancel();
    }
    dropReview(id);
    failures.erase(id);
    notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
}

void AppModel::retryNow() {
    for (const auto& [id, job] : jobs) job.retryWait->wake();
}

void AppModel::shutdown() {
    std::vector<Uuid> ids;
    for (const auto& [id, job] : jobs) ids.push_back(id);
    for (const auto& id : ids) stopJob(id);
    if (saver) saver->flush();
}

} // namespace zembrastel
