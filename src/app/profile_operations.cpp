// What the user does with profiles: create and edit, pause and resume, remove.
#include "app/app_model.h"
#include "model/error.h"
#include "model/records/comparison_record.h"

#include <utility>

namespace zembrastel {
namespace {

bool differsInScope(const Profile& old, const Profile& changed) {
    return old.effectiveSyncSelection() != changed.effectiveSyncSelection();
}

} // namespace

// The profile as it is saved: valid, and with the consequences of a change of its sync contents.
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
    changed = options.demonstration ? options.demonstration->validated(changed) : changed.validated();
    if (jobs.runningInFolder(changed.localFolder, changed.id) != nullptr) {
        throw SyncError(
            "Another active profile already watches this local folder. Pause it before using this profile.");
    }
    return changed;
}

void AppModel::save(
    Profile changed, const std::optional<std::string>& password, std::optional<FileMap> initialBaseline) {
    const Profile* stored = profile(changed.id);
    const std::optional<Profile> old = stored == nullptr ? std::nullopt : std::optional(*stored);
    const bool scopeEdited = old && differsInScope(*old, changed);
    changed = savable(std::move(changed));
    const Uuid id = changed.id;
    if (password) passwords.storeNow(id, *password);
    stopJob(id);
    if (initialBaseline) records.setBaseline(id, *std::move(initialBaseline));
    if (scopeEdited) records.keepSharedScope(*old, changed);
    if (old && !isSamePlaceOnServer(*old, changed)) forgetServer(id);
    const bool enabled = changed.enabled;
    const bool empty = changed.hasEmptySyncSelection();
    records.put(std::move(changed));
    observers.notify([](ModelObserver& observer) { observer.profilesChanged(); });
    select(id);
    try {
        records.persist();
    } catch (const std::exception& error) {
        statuses.enter(id, Phase::stopped, "The profile could not be saved, and does not run: " + describe(error));
        throw;
    }
    if (!empty && enabled) {
        start(id);
        return;
    }
    statuses.change(id, [](ProfileStatus& status) { status.pending = 0; });
    if (empty) {
        statuses.enter(id, Phase::nothingSelected, "Choose files or folders in Edit sync contents to resume syncing.");
    } else {
        statuses.enterPaused(id);
    }
}

void AppModel::saveMoved(const Profile& changed, NewPlace found) {
    save(changed, std::nullopt, found == NewPlace::sameFiles ? std::nullopt : std::optional(FileMap{}));
    // No check that save() has started can end before this.
    if (found == NewPlace::otherFiles) pendingReviews.unsettled(changed.id).adoption = Adoption::nothing;
}

void AppModel::toggle(const Uuid& id) {
    if (running(id)) {
        pause(id);
    } else {
        resume(id);
    }
}

void AppModel::pause(const Uuid& id) {
    Profile* paused = records.find(id);
    if (paused == nullptr || (!running(id) && !paused->enabled)) return;
    const bool wasRunning = running(id);
    stopJob(id);
    paused->enabled = false;
    statuses.enter(id, Phase::paused, "Local changes will upload when you resume.");
    if (wasRunning) statuses.log(id, "Watching paused.");
    observers.notify([](ModelObserver& observer) { observer.profilesChanged(); });
    records.persist();
}

void AppModel::resume(const Uuid& id) { resumeWith(id, std::nullopt); }

void AppModel::resumeWith(const Uuid& id, const Jobs::Earlier& earlier) {
    Profile* resumed = records.find(id);
    if (resumed == nullptr || (running(id) && resumed->enabled)) return;
    resumed->enabled = true;
    jobs.start(id, earlier);
    observers.notify([](ModelObserver& observer) { observer.profilesChanged(); });
    records.persist();
}

void AppModel::remove(const Uuid& id) {
    if (profile(id) == nullptr) return;
    passwords.remove(id, [this, id](const std::optional<std::string>& failure) {
        if (failure) {
            setAlert(*failure);
        } else {
            forgetProfile(id);
        }
    });
}

// What was seen of the profile's place on the server.
void AppModel::forgetServer(const Uuid& id) {
    records.forgetDates(id);
    pendingReviews.forget(id);
    jobs.forgetServer(id);
    if (const auto& folder = records.folder()) {
        ResendRequest(*folder, id).remove();
        PublishJournal(*folder, id).remove();
        ComparisonRecord(*folder, id).remove();
        PublishedContents::remove(*folder, id);
    }
}

void AppModel::forgetProfile(const Uuid& id) {
    stopJob(id);
    if (const auto& folder = records.folder()) TemporaryJournal(*folder, id).remove();
    records.erase(id);
    statuses.forget(id);
    passwords.forget(id);
    jobs.forget(id);
    forgetServer(id);
    observers.notify([](ModelObserver& observer) { observer.profilesChanged(); });
    if (selected == id) select(profiles().empty() ? std::nullopt : std::optional(profiles().front().id));
    try {
        records.persist();
    } catch (const std::exception& error) {
        setAlert(describe(error));
    }
}

} // namespace zembrastel
