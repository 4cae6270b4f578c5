// The owner, permissions and extended attributes of a file.
//
// Any thread. Failures are thrown as std::filesystem::filesystem_error, naming the file.
#pragma once

#include <filesystem>

namespace zembrastel {

// Copies owner, group, permission bits (0777, never setuid, setgid or sticky), access-control list and extended
// attributes from the open file `from` to the open file `to`, as far as the user may set them and the file system
// supports them. If the group or the list cannot be kept, the group gets no more rights than others have. `name` is for
// messages.
void copyAttributes(int from, int to, const std::filesystem::path& name);

} // namespace zembrastel
