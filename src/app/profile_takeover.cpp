#include "app/profile_takeover.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace zembrastel {

Profile importable(const Profile& found, const std::vector<Profile>& others) {
    if (std::ranges::find(others, found.name, &Profile::name) != others.end()) {
        throw SyncError("There is a profile of this name already.");
    }
    if (found.localFolder.empty()) throw LocalFolderWanted("It has no local folder.");
    std::error_code ignored; // what cannot be looked at is not there either
    if (!std::filesystem::is_directory(found.localFolder, ignored)) {
        throw LocalFolderWanted("There is no folder " + found.localFolder + " here.");
    }
    Profile valid = found.validated();
    // The copy of a profile that is here, renamed perhaps, is one of its own.
    if (std::ranges::find(others, valid.id, &Profile::id) != others.end()) valid.id = Uuid::random();
    return valid;
}

} // namespace zembrastel
