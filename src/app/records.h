// What is saved: the profiles, the files of each that count as synchronised, and the dates of these on the server.
//
// Main context. A change is in force at once; persist() and saveSoon() bring it to the disk, see state_saver.h.
#pragma once

#include "app/remote_review.h"
#include "app/state_saver.h"
#include "model/records/publish_journal.h"
#include "model/records/published_contents.h"
#include "model/saved_state.h"
#include "transport/compare/server_check.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class Records {
public:
    // Reports that what workers reported for some profiles could not be saved. It is tried again.
    using Unsaved = StateSaver::Failed;

    Records(MainContext& mainContext, Clock& clockToUse, Unsaved unsaved)
        : context(mainContext), clock(clockToUse), reportUnsaved(std::move(unsaved)) {}

    // Loads what is saved. Throws what StateStore::load() throws; then there are no profiles, and saving fails.
    void load(StateStore store);

    // Saves nothing, ever: for a demonstration.
    void keepInMemory() { inMemory = true; }

    [[nodiscard]] const SavedState& saved() const { return state; }
    [[nodiscard]] const std::vector<Profile>& profiles() const { return state.profiles; }
    [[nodiscard]] const Profile* profile(const Uuid& id) const; // nullptr if there is none
    [[nodiscard]] Profile* find(const Uuid& id);
    [[nodiscard]] const FileMap& baseline(const Uuid& id) const;
    [[nodiscard]] const RemoteDates& remoteDates(const Uuid& id) const;
    [[nodiscard]] const std::optional<std::filesystem::path>& folder() const { return stateFolder; }
    [[nodiscard]] std::optional<PublishJournal> journal(const Uuid& id) const; // nullopt if nothing is saved
    // The hashes of published contents; nullopt if the profile does not compare them, or nothing is saved.
    [[nodiscard]] std::optional<PublishedContents> contents(const Profile& profile) const;

    // Replaces the profile of the same id, or adds the profile.
    void put(Profile profile);
    // Removes the profile and all that is recorded of it.
    void erase(const Uuid& id);
    // Undoes changes: back to a copy of saved().
    void restore(const SavedState& before) { state = before; }

    void setBaseline(const Uuid& id, FileMap files) { state.baselines[id] = std::move(files); }
    void recordFile(const Uuid& id, const std::string& path, const Fingerprint& version);
    void recordDate(const Uuid& id, const std::string& path, RemoteDate date);
    // The profile was compared with its server. From then on a file without a record has another meaning: see
    // ServerRecord::wasCompared. Saved at once: after a kill, own uploads must not look like those of others.
    void recordComparison(const Uuid& id);
    // These files no longer count as synchronised.
    void forgetFiles(const Uuid& id, const PathSet& paths);
    void forgetDates(const Uuid& id);
    // Forgets what is outside the sync contents of either version of the profile.
    void keepSharedScope(const Profile& old, const Profile& changed);

    // Saves everything before it returns. Throws what the user reads.
    void persist();
    // The same, and reports a failure as one of this profile.
    void persistFor(const Uuid& id);
    // Saves what was reported for the profile, now or a little later.
    void saveSoon(const Uuid& id);
    // Writes once for all calls of persist() that `changes` makes. Throws if that fails. `changes` throws nothing.
    void persistOnce(const std::function<void()>& changes);
    void flush();

private:
    MainContext& context;
    Clock& clock;
    const Unsaved reportUnsaved;
    SavedState state;
    std::optional<std::filesystem::path> stateFolder;
    bool inMemory = false;
    bool savesLater = false; // see persistOnce()
    bool saveIsDue = false;
    std::optional<StateSaver> saver; // nullopt if the saved state could not be loaded
};

// What is recorded of the files of one profile, for a comparison with the server. A pure function; any thread. Only
// what the saved state has: not the announced files, and not what reviews left open.
[[nodiscard]] ServerRecord recordOf(const SavedState& state, const Uuid& profile);

} // namespace zembrastel
