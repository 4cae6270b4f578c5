// What the user does with profiles: create and edit, pause and resume, remove.
#include "app/app_model.h"
#include "app/demo.h"
#include "model/error.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

bool differsInScope(const Profile& old, const Profile& changed) {
    return old.effectiveSyncSelection() != changed.effectiveSyncSelection();
}

} // namespace

void AppModel::keepSharedScope(const Profile& old, const Profile& changed) {
    const auto isOutside = [&old, &changed](std::string_view path, const auto&) {
        return !old.includesInSync(path) || !changed.includesInSync(path);
    };
    if (const auto files = state.baselines.find(changed.id); files != state.baselines.end()) {
        files->second.eraseIf(isOutside);
    }
    if (!state.remoteDates) return;
    if (const auto dates = state.remoteDates->find(changed.id); dates != state.remoteDates->end()) {
        dates->second.eraseIf(isOutside);
    }
}

// The profile as it is saved: valid, and with what a change of its sync contents entails.
Profile AppModel::savable(Profile changed) const {
    const Profile* old = profile(changed.id);
    if (old != nullptr && differsInScope(*old, changed)) {
        changed.initialDownloadSelection = changed.effectiveSyncSelection();
        changed.needsDownload = changed.initialDownloadSelection && changed.initialDownloadSelection->hasSelection();
    }
    if (changed.hasEmptySyncSelection()) {
        changed.enabled = false;
        changed.needsDownload = false;
    }
    changed = options.demo ? validatedForDemo(changed) : changed.validated();
    if (runningProfileWithFolder(changed.id, changed.localFolder) != nullptr) {
        throw SyncError(
            "Another active profile already watches this local folder. Pause it before using this profile.");
    }
    return changed;
}

void AppModel::save(
    Profile changed, const std::optional<std::string>& password, std::optional<FileMap> initialBaseline) {
    Profile* stored = find(changed.id);
    const std::optional<Profile> old = stored == nullptr ? std::nullopt : std::optional(*stored);
    const bool scopeEdited = old && differsInScope(*old, changed);
    changed = savable(std::move(changed));
    const bool placeEdited = old && !isSamePlaceOnServer(*old, changed);
    if (password && !options.demo) {
        options.passwordAccess.save(*password, changed.id);
        passwords.insert_or_assign(changed.id, *password);
    }

    const Uuid id = changed.id;
    stopJob(id);
    if (initialBaseline) state.baselines[id] = std::move(*initialBaseline);
    if (scopeEdited) keepSharedScope(*old, changed);
    if (placeEdited) forgetServer(id);
    const bool enabled = changed.enabled;
    const bool empty = changed.hasEmptySyncSelection();
    if (stored == nullptr) {
        state.profiles.push_back(std::move(changed));
    } else {
        *stored = std::move(changed);
    }
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    select(id);
    try {
        persist();
    } catch (const std::exception& error) {
        changeStatus(id, [&error](ProfileStatus& status) {
            status.enter(Phase::stopped, "The profile could not be saved, and does not run: " + describe(error));
        });
        throw;
    }
    if (!empty && enabled) {
        start(id);
        return;
    }
    changeStatus(id, [empty](ProfileStatus& status) {
        status.pending = 0;
        if (empty) {
            status.enter(Phase::nothingSelected, "Choose files or folders in Edit sync contents to resume syncing.");
        } else {
            status.enter(Phase::paused, ProfileStatus().detail);
        }
    });
}

void AppModel::saveTogether(const std::function<void()>& changes) {
    savesLater = true;
    changes();
    savesLater = false;
    if (std::exchange(saveIsDue, false)) persist();
}

void AppModel::toggle(const Uuid& id) {
    if (running(id)) {
        pause(id);
    } else {
        resume(id);
    }
}

void AppModel::pause(const Uuid& id) {
    Profile* paused = find(id);
    if (paused == nullptr || (!running(id) && !paused->enabled)) return;
    const bool wasRunning = running(id);
    stopJob(id);
    paused->enabled = false;
    changeStatus(
        id, [](ProfileStatus& status) { status.enter(Phase::paused, "Local changes will upload when you resume."); });
    if (wasRunning) log(id, "Watching paused.");
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    persist();
}

void AppModel::resume(const Uuid& id) { resumeWith(id, std::nullopt); }

void AppModel::resumeWith(const Uuid& id, const Earlier& earlier) {
    Profile* resumed = find(id);
    if (resumed == nullptr || (running(id) && resumed->enabled)) return;
    resumed->enabled = true;
    startWith(id, earlier);
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    persist();
}

void AppModel::remove(const Uuid& id) {
    if (profile(id) == nullptr) return;
    if (options.demo) {
        forgetProfile(id);
        return;
    }
    passwordCalls.ask(
        [removePassword = options.passwordAccess.remove, id] {
            removePassword(id);
            return std::string();
        },
        [weak = std::weak_ptr(self), id](const PasswordCalls::Result& result) {
            const auto alive = weak.lock();
            if (!alive) return;
            if (result.failure) {
                (*alive)->setAlert(*result.failure);
            } else {
                (*alive)->forgetProfile(id);
            }
        });
}

// What was seen of the profile's place on the server.
void AppModel::forgetServer(const Uuid& id) {
    if (state.remoteDates) state.remoteDates->erase(id);
    unanswered.erase(id);
    disputed.erase(id);
    missing.erase(id);
    resends.erase(id);
    serverTraits.erase(id);
    if (!stateFolder) return;
    ResendRequest(*stateFolder, id).remove();
    PublishJournal(*stateFolder, id).remove();
}

void AppModel::forgetProfile(const Uuid& id) {
    stopJob(id);
    if (stateFolder) TemporaryJournal(*stateFolder, id).remove();
    std::erase_if(state.profiles, [&id](const Profile& candidate) { return candidate.id == id; });
    state.baselines.erase(id);
    statuses.erase(id);
    passwords.erase(id);
    lanes.erase(id);
    forgetServer(id);
    if (saver) saver->forget(id);
    notify([](ModelObserver& observer) { observer.profilesChanged(); });
    if (selected == id) select(profiles().empty() ? std::nullopt : std::optional(profiles().front().id));
    try {
        persist();
    } catch (const std::exception& error) {
        setAlert(describe(error));
    }
}

} // namespace zembrastel
