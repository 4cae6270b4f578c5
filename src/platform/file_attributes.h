// What a file has beside its content: whose it is, and who may do what with it.
//
// Any thread. Failures are thrown as std::filesystem::filesystem_error, naming the file.
#pragma once

#include <filesystem>

namespace zembrastel {

// Gives the open file `to` the owner, group, permission bits (0777, so never setuid, setgid or sticky), access-control
// list and extended attributes of the open file `from`, as far as the user may set them and the file system has them.
// Where the group or the list cannot be kept, the group gets no more than others have. `name` is for messages.
void copyAttributes(int from, int to, const std::filesystem::path& name);

} // namespace zembrastel
