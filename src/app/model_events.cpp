// How what a worker reports becomes part of the model, and how that reaches the disk.
#include "app/app_model.h"
#include "model/error.h"

#include <algorithm>
#include <cassert>

namespace zembrastel {
namespace {

constexpr const char* noStore = "Profile storage is unavailable. Restart the app after correcting the startup error.";

} // namespace

void AppModel::receive(const WorkerEvent& event, const Uuid& id) {
    std::visit([this, &id](const auto& happened) { apply(happened, id); }, event);
}

void AppModel::apply(const event::Status& event, const Uuid& id) {
    changeStatus(id, [&event](ProfileStatus& status) {
        status.enter(event.phase, event.detail);
        status.pending = event.pending;
    });
}

void AppModel::apply(const event::Activity& event, const Uuid& id) {
    log(id, event.text, event.error ? Activity::Kind::failure : Activity::Kind::note);
}

void AppModel::apply(const event::Uploaded& event, const Uuid& id) {
    assert(jobs.at(id).is<Job::Watching>());
    state.baselines[id].set(event.path, event.fingerprint);
    changeStatus(id, [this](ProfileStatus& status) {
        ++status.uploaded;
        status.lastUpload = options.clock.now();
        status.pending = std::max<std::int64_t>(status.pending - 1, 0);
    });
    countFileDone(id);
    log(id, "Uploaded " + event.path, Activity::Kind::uploaded, event.path);
    if (missing[id].erase(event.path) > 0) publishReview(id);
    saveSoon(id);
}

void AppModel::apply(const event::Baseline& event, const Uuid& id) {
    state.baselines[id] = event.files;
    const auto isDeleted = [&event](const std::string& path) { return !event.files.contains(path); };
    if (std::erase_if(missing[id], isDeleted) > 0) publishReview(id);
    saveSoon(id);
}

void AppModel::apply(const event::Downloaded& event, const Uuid& id) {
    state.baselines[id].set(event.path, event.fingerprint);
    countFileDone(id);
    saveSoon(id);
}

void AppModel::apply(const event::RemoteDate& event, const Uuid& id) {
    recordRemoteDate(event.path, event.date, id);
    saveSoon(id);
}

void AppModel::apply(const event::DownloadFinished&, const Uuid& id) {
    Profile* finished = find(id);
    if (finished == nullptr) return;
    finished->needsDownload = false;
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    persistFor(id);
    stopJob(id);
    start(id);
}

void AppModel::apply(const event::FolderReturned&, const Uuid& id) {
    log(id, "The local folder is back.");
    stopJob(id);
    start(id);
}

void AppModel::apply(const event::ServerChanged& event, const Uuid& id) {
    log(id,
        "Not replaced, because they changed on the server: " + listedPaths(event.paths)
            + ". The server is checked again before anything is uploaded.",
        Activity::Kind::failure);
    stopJob(id);
    unanswered[id].insert(event.paths.begin(), event.paths.end());
    disputed[id] = event.paths;
    start(id);
}

void AppModel::apply(const event::PassEnded& event, const Uuid& id) {
    endInsteadOfWatching(id);
    if (!event.failure) return;
    changeStatus(id, [&event](ProfileStatus& status) { status.enter(Phase::stopped, *event.failure); });
}

void AppModel::takeProgress(const TransferProgress& progress, const Uuid& id) {
    statuses[id].progress = progress;
    notify([&id](ModelObserver& observer) { observer.progressChanged(id); });
}

// Between two reports of progress, of which the first was about the file that is now done.
void AppModel::countFileDone(const Uuid& id) {
    auto& progress = statuses[id].progress;
    if (!progress) return;
    progress->file.reset();
    ++progress->filesDone;
    if (progress->filesDone >= progress->filesQueued && progress->folders == 0) {
        changeStatus(id, [](ProfileStatus& status) { status.progress.reset(); });
    } else {
        notify([&id](ModelObserver& observer) { observer.progressChanged(id); });
    }
}

void AppModel::persist() {
    if (options.demo) return;
    if (!saver) throw SyncError(noStore);
    if (savesLater) {
        saveIsDue = true;
    } else {
        saver->save();
    }
}

void AppModel::persistFor(const Uuid& id) {
    try {
        persist();
    } catch (const std::exception& error) {
        tellUnsaved({id}, describe(error));
    }
}

void AppModel::saveSoon(const Uuid& id) {
    if (options.demo) return;
    if (saver) {
        saver->saveSoon(id);
    } else {
        tellUnsaved({id}, noStore);
    }
}

void AppModel::tellUnsaved(const std::set<Uuid>& ids, const std::string& message) {
    const std::string problem = "Could not save sync state: " + message;
    for (const auto& id : ids) {
        changeStatus(id, [&problem](ProfileStatus& status) { status.reportUnsaved(problem); });
        log(id, problem, Activity::Kind::failure);
    }
}

} // namespace zembrastel
