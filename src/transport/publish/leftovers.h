// Temporary files in the local folder, left by a program that was killed during a download.
//
// Blocks its thread on the disk only. Any thread.
#pragma once

#include "model/profile.h"
#include "transport/transfer_control.h"

#include <string_view>

namespace zembrastel {

// True if the name of this path is that of a download's temporary file.
[[nodiscard]] bool isTemporaryPath(std::string_view path);

// Clears the leftovers in the profile's local folder, except those of a running download. Call it at the start of a
// job. A partial download is removed. A displaced file becomes a backup: it may be the only copy of an edit. Files that
// cannot be moved stay until the next start. Throws nothing; ends early if the control is stopped.
void clearLeftovers(const Profile& profile, const TransferControl& control);

} // namespace zembrastel
