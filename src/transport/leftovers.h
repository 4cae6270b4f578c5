// Temporary files that a program which was killed in mid download left in the local folder.
#pragma once

#include "model/profile.h"

#include <string_view>

namespace zembrastel {

// Is the item of this path, by its name, one that a download made?
[[nodiscard]] bool isTemporaryPath(std::string_view path);

// Takes the temporary file of this path out of the way unless a download is still at it. It may hold the only copy of
// an edit that the program was about to put back, so what is not held elsewhere becomes a backup. What cannot be moved
// stays; it does no harm, and there is another check to come.
void clearLeftover(const Profile& profile, std::string_view path);

} // namespace zembrastel
