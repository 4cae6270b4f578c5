// How what a worker reports becomes part of the model, and how that reaches the disk.
#include "app/app_model.h"
#include "model/error.h"

#include <algorithm>

namespace zembrastel {
namespace {

// Saving may take a tenth of the time: after a save that took one part, the next nine are for other things. What
// happens meanwhile is gathered into one save, at most this late.
constexpr int restAfterSave = 9;
constexpr std::chrono::seconds longestGathering{2};

} // namespace

void AppModel::receive(const WorkerEvent& event, const Uuid& id) {
    std::visit([this, &id](const auto& happened) { apply(happened, id); }, event);
}

void AppModel::apply(const event::Status& event, const Uuid& id) {
    changeStatus(id, [&event](ProfileStatus& status) {
        status.title = event.title;
        status.detail = event.detail;
        status.pending = event.pending;
        status.failed = event.title.starts_with("Retrying") || event.title == "Waiting to retry";
    });
}

void AppModel::apply(const event::Activity& event, const Uuid& id) { log(id, event.text, event.error); }

void AppModel::apply(const event::Uploaded& event, const Uuid& id) {
    state.baselines[id].insert_or_assign(event.path, event.fingerprint);
    changeStatus(id, [this](ProfileStatus& status) {
        ++status.uploaded;
        status.lastUpload = options.clock.now();
        status.pending = std::max<std::int64_t>(status.pending - 1, 0);
    });
    log(id, "Uploaded " + event.path);
    saveSoon(id);
}

void AppModel::apply(const event::Baseline& event, const Uuid& id) {
    state.baselines[id] = event.files;
    saveSoon(id);
}

void AppModel::apply(const event::Downloaded& event, const Uuid& id) {
    state.baselines[id].insert_or_assign(event.path, event.fingerprint);
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

void AppModel::persist() {
    if (options.demo) return;
    if (!store) {
        throw SyncError("Profile storage is unavailable. Restart the app after correcting the startup error.");
    }
    const auto began = options.clock.steadyNow();
    store->save(state);
    const auto ended = options.clock.steadyNow();
    nextSave = ended + std::min<std::chrono::steady_clock::duration>((ended - began) * restAfterSave, longestGathering);
    unsaved.clear();
}

void AppModel::persistFor(const Uuid& id) {
    unsaved.insert(id);
    saveGathered();
}

void AppModel::saveSoon(const Uuid& id) {
    const auto now = options.clock.steadyNow();
    const bool waiting = !unsaved.empty() && now < nextSave;
    unsaved.insert(id);
    if (now >= nextSave) {
        saveGathered();
    } else if (!waiting) {
        context.postAfter(std::chrono::ceil<std::chrono::milliseconds>(nextSave - now), [weak = std::weak_ptr(self)] {
            if (const auto alive = weak.lock()) (*alive)->saveGathered();
        });
    }
}

void AppModel::saveGathered() {
    if (unsaved.empty()) return;
    try {
        persist();
    } catch (const std::exception& error) {
        const std::string problem = "Could not save sync state: " + describe(error);
        for (const auto& id : std::set<Uuid>(unsaved)) {
            changeStatus(id, [&problem](ProfileStatus& status) {
                status.title = "Needs attention";
                status.detail = problem;
            });
            log(id, problem, true);
        }
    }
}

} // namespace zembrastel
