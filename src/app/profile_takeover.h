// Whether a profile out of another program's file, or out of an export, can be saved as it stands.
//
// Any thread: the profiles that are there already are passed in. It looks at the local folder, which may block.
#pragma once

#include "model/error.h"
#include "model/profile.h"

#include <vector>

namespace zembrastel {

// The user has to name another local folder first.
class LocalFolderWanted : public SyncError {
public:
    using SyncError::SyncError;
};

// The profile as it is to be saved beside the others. Throws SyncError with a sentence that says why it cannot be.
[[nodiscard]] Profile importable(const Profile& found, const std::vector<Profile>& others);

} // namespace zembrastel
