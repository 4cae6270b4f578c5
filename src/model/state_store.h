// profiles.json: the saved state, read and written as a whole.
//
// One object per state folder, used by one thread at a time. It does no locking; see instance_lock.h.
#pragma once

#include "model/private_items.h"
#include "model/saved_state.h"
#include "platform/folder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class StateStore {
public:
    // Creates the folder (by default "Zembrastel" in the user's data folder) and its missing parents with mode 0700. An
    // existing folder gets that mode too, if the user owns it and it contains only files of this program. Throws
    // std::filesystem::filesystem_error.
    explicit StateStore(std::optional<std::filesystem::path> folder = std::nullopt);

    // For reading only: creates and changes nothing. nullopt if there is no such folder.
    [[nodiscard]] static std::optional<StateStore> find(std::optional<std::filesystem::path> folder = std::nullopt);

    // An empty state if there is no file yet. Throws std::filesystem::filesystem_error or SyncError for a file that
    // cannot be read or understood, or that is no regular file; the file is not changed.
    [[nodiscard]] SavedState load() const;

    // The profiles only: faster. Refuses the same files.
    [[nodiscard]] std::vector<Profile> loadProfiles() const;

    // Replaces the whole file in one step, with mode 0600: a reader, or a run after a crash, finds the complete old or
    // new file. Throws SyncError or std::filesystem::filesystem_error; the old file then remains. Refuses if the
    // folder's path now leads to another folder, or to none. Any thread, one at a time.
    void save(const SavedState& state) const;

    [[nodiscard]] const std::filesystem::path& folder() const { return stateFolder; }

    // The items that must not be published if they are in a local folder.
    [[nodiscard]] std::vector<PrivateItem> privateItems() const;

private:
    StateStore(std::filesystem::path named, Folder opened);
    void keepToOwner() const;
    [[nodiscard]] std::optional<std::string> contents() const;
    // An empty value if there is no file. Errors in its contents name the file.
    template <class Decoded>
    [[nodiscard]] Decoded read(Decoded (*decode)(std::string json)) const;

    std::filesystem::path stateFolder;
    std::shared_ptr<const Folder> held; // while it is open, no other folder can have its inode number
};

} // namespace zembrastel
