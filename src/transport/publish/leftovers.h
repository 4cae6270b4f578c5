// Temporary files that an interrupted program left: of downloads in the local folder, of uploads on the server.
//
// Blocks its thread. Any thread.
#pragma once

#include "model/profile.h"
#include "transport/transfer_control.h"

#include <string_view>

namespace zembrastel {

class Dialogue;
struct FTPTransport;

// True if the name of this path is that of a download's temporary file.
[[nodiscard]] bool isTemporaryPath(std::string_view path);

// Clears the leftovers in the profile's local folder, except those of a running download. Call it at the start of a
// job. A partial download is removed. A displaced file becomes a backup: it may be the only copy of an edit. Files that
// cannot be moved stay until the next start. Throws nothing; ends early if the control is stopped.
void clearLeftovers(const Profile& profile, const TransferControl& control);

// Removes the temporary files that earlier uploads left on the server, by exact name: adds a block for each folder with
// such files. What is removed is forgotten; the rest is tried again.
void addRemovals(Dialogue& dialogue, const FTPTransport& transport);

// The same in a conversation of its own. Files that stay on the server are tried again later; throws Cancelled.
void removeLeftovers(const FTPTransport& transport);

} // namespace zembrastel
