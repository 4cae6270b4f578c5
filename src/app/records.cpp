#include "app/records.h"

#include "model/error.h"

#include <algorithm>

namespace zembrastel {
namespace {

constexpr const char* noStore = "Profile storage is unavailable. Restart the app after correcting the startup error.";

} // namespace

void Records::load(StateStore store) {
    state = store.load();
    stateFolder = store.folder();
    saver.emplace(context, clock, std::move(store), state, reportUnsaved);
}

const Profile* Records::profile(const Uuid& id) const {
    const auto found = std::ranges::find(state.profiles, id, &Profile::id);
    return found == state.profiles.end() ? nullptr : &*found;
}

Profile* Records::find(const Uuid& id) { return const_cast<Profile*>(std::as_const(*this).profile(id)); }

const FileMap& Records::baseline(const Uuid& id) const {
    static const FileMap none;
    const auto found = state.baselines.find(id);
    return found == state.baselines.end() ? none : found->second;
}

const RemoteDates& Records::remoteDates(const Uuid& id) const {
    static const RemoteDates none;
    if (!state.remoteDates) return none;
    const auto found = state.remoteDates->find(id);
    return found == state.remoteDates->end() ? none : found->second;
}

std::optional<PublishJournal> Records::journal(const Uuid& id) const {
    return stateFolder ? std::optional(PublishJournal(*stateFolder, id)) : std::nullopt;
}

std::optional<PublishedContents> Records::contents(const Profile& profile) const {
    if (!profile.compareContents || !stateFolder) return std::nullopt;
    return PublishedContents(*stateFolder, profile);
}

void Records::put(Profile profile) {
    if (Profile* stored = find(profile.id)) {
        *stored = std::move(profile);
    } else {
        state.profiles.push_back(std::move(profile));
    }
}

void Records::erase(const Uuid& id) {
    std::erase_if(state.profiles, [&id](const Profile& candidate) { return candidate.id == id; });
    state.baselines.erase(id);
    forgetDates(id);
    if (saver) saver->forget(id);
}

void Records::recordFile(const Uuid& id, const std::string& path, const Fingerprint& version) {
    state.baselines[id].set(path, version);
}

void Records::recordDate(const Uuid& id, const std::string& path, RemoteDate date) {
    if (!state.remoteDates) state.remoteDates.emplace();
    (*state.remoteDates)[id].set(path, date);
}

void Records::recordComparison(const Uuid& id) {
    if (!state.remoteDates) state.remoteDates.emplace();
    if (state.remoteDates->try_emplace(id).second) persistFor(id);
}

void Records::forgetFiles(const Uuid& id, const PathSet& paths) {
    if (paths.empty()) return;
    state.baselines[id].eraseIf([&paths](std::string_view path, const Fingerprint&) { return paths.contains(path); });
    saveSoon(id);
}

void Records::forgetDates(const Uuid& id) {
    if (state.remoteDates) state.remoteDates->erase(id);
}

void Records::keepSharedScope(const Profile& old, const Profile& changed) {
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

void Records::persist() {
    if (inMemory) return;
    if (!saver) throw SyncError(noStore);
    if (savesLater) {
        saveIsDue = true;
    } else {
        saver->save();
    }
}

void Records::persistFor(const Uuid& id) {
    try {
        persist();
    } catch (const std::exception& error) {
        reportUnsaved({id}, describe(error));
    }
}

void Records::saveSoon(const Uuid& id) {
    if (inMemory) return;
    if (saver) {
        saver->saveSoon(id);
    } else {
        reportUnsaved({id}, noStore);
    }
}

void Records::persistOnce(const std::function<void()>& changes) {
    savesLater = true;
    changes();
    savesLater = false;
    if (std::exchange(saveIsDue, false)) persist();
}

void Records::flush() {
    if (saver) saver->flush();
}

ServerRecord recordOf(const SavedState& state, const Uuid& profile) {
    ServerRecord record;
    const auto files = state.baselines.find(profile);
    if (files != state.baselines.end()) record.baseline = files->second;
    if (!state.remoteDates) return record;
    const auto dates = state.remoteDates->find(profile);
    if (dates == state.remoteDates->end()) return record;
    record.knownDates = dates->second;
    record.wasCompared = true;
    return record;
}

} // namespace zembrastel
