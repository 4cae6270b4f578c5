// profiles.json: the saved state, read and written whole.
//
// Identity: one object a state folder, used from one thread at a time. It does no locking; see instance_lock.h.
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
    // Makes the folder (by default "Zembrastel" in the user's data folder) and its missing parents, for the owner
    // alone (0700). One that exists gets that mode as well, if it is the user's and nothing but the program's own
    // files is in it. Throws std::filesystem::filesystem_error.
    explicit StateStore(std::optional<std::filesystem::path> folder = std::nullopt);

    // For looking only: makes and changes nothing. Nothing when there is no such folder.
    [[nodiscard]] static std::optional<StateStore> find(std::optional<std::filesystem::path> folder = std::nullopt);

    // An empty state when there is no file yet. A file that cannot be read or understood, or is no regular file, is
    // thrown as a std::filesystem::filesystem_error or SyncError and never touched.
    [[nodiscard]] SavedState load() const;

    // The profiles alone, for who needs no more. The same files are refused.
    [[nodiscard]] std::vector<Profile> loadProfiles() const;

    // Writes the whole file in one step, for the owner alone (0600): a reader, or a run after a crash, sees the old or
    // the new file entire. Throws SyncError or std::filesystem::filesystem_error; the old file is then still there.
    // Refuses when another folder, or none, is now where the folder was. Any thread, one at a time.
    void save(const SavedState& state) const;

    [[nodiscard]] const std::filesystem::path& folder() const { return stateFolder; }

    // What of it must not be published, should it lie in a local folder.
    [[nodiscard]] std::vector<PrivateItem> privateItems() const;

private:
    StateStore(std::filesystem::path named, Folder opened);
    void keepToOwner() const;
    [[nodiscard]] std::optional<std::string> contents() const;
    // An empty value where there is no file. What is wrong with its contents names the file.
    template <class Decoded>
    [[nodiscard]] Decoded read(Decoded (*decode)(std::string json)) const;

    std::filesystem::path stateFolder;
    std::shared_ptr<const Folder> held; // open: while it is, no other folder can have its inode number
};

} // namespace zembrastel
