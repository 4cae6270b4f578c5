// Whether a profile from a file of another program, or from an export, can be saved unchanged.
//
// Any thread. Reads the local folder, which may block.
#pragma once

#include "model/error.h"
#include "model/profile.h"

#include <vector>

namespace zembrastel {

// The user must name another local folder first.
class LocalFolderWanted : public SyncError {
public:
    using SyncError::SyncError;
};

// The profile as it is saved beside the others. Throws SyncError if it cannot be saved.
[[nodiscard]] Profile importable(const Profile& found, const std::vector<Profile>& others);

} // namespace zembrastel
