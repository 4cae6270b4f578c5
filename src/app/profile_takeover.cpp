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
    std::error_code ignored; // a folder that cannot be read counts as missing
    if (!std::filesystem::is_directory(found.localFolder, ignored)) {
        throw LocalFolderWanted("There is no folder " + found.localFolder + " here.");
    }
    Profile valid = found.validated();
    // A copy of a known profile becomes another profile.
    if (std::ranges::find(others, valid.id, &Profile::id) != others.end()) valid.id = Uuid::random();
    return valid;
}

} // namespace zembrastel
