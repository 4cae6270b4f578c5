// Temporary files that a program which was killed in mid download left in the local folder.
//
// Blocks its thread on the disk alone. Any thread.
#pragma once

#include "model/profile.h"
#include "transport/transfer_control.h"

#include <string_view>

namespace zembrastel {

// Is the item of this path, by its name, one that a download made?
[[nodiscard]] bool isTemporaryPath(std::string_view path);

// Takes those of the profile's local folder out of the way, unless a download is still at them: for the start of a job.
// A partial download is removed. A displaced file may be the only copy of an edit that the program was about to put
// back, and becomes a backup. What cannot be moved stays; it does no harm, and there is another start to come. Throws
// nothing; ends early when the control is stopped.
void clearLeftovers(const Profile& profile, const TransferControl& control);

} // namespace zembrastel
