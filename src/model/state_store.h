// profiles.json: the saved state, read and written whole.
//
// Identity: one object a state folder, used from one thread at a time. It does no locking; see instance_lock.h.
#pragma once

#include "model/saved_state.h"

#include <filesystem>
#include <optional>

namespace zembrastel {

class StateStore {
public:
    // Makes the folder (by default "Zembrastel" in the user's data folder) and its missing parents, for the owner
    // alone (0700). Throws std::filesystem::filesystem_error.
    explicit StateStore(std::optional<std::filesystem::path> folder = std::nullopt);

    // An empty state when there is no file yet. A file that cannot be read or understood is thrown as a
    // std::filesystem::filesystem_error or SyncError and never touched.
    [[nodiscard]] SavedState load() const;

    // The profiles alone, for who needs no more. Errors as above.
    [[nodiscard]] std::vector<Profile> loadProfiles() const;

    // Writes the whole file in one step, for the owner alone (0600): a reader, or a run after a crash, sees the old or
    // the new file entire. Throws SyncError or std::filesystem::filesystem_error; the old file is then still there.
    // Any thread, one at a time.
    void save(const SavedState& state) const;

    [[nodiscard]] const std::filesystem::path& folder() const { return stateFolder; }

private:
    std::filesystem::path stateFolder;
    std::filesystem::path realFolder; // where it was found; a link put in its place later is refused
};

} // namespace zembrastel
