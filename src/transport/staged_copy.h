// The private copy of a local file that is sent in its place, so that later edits cannot get into an upload.
#pragma once

#include "model/fingerprint.h"
#include "platform/descriptor.h"
#include "platform/private_folder.h"
#include "transport/transfer_control.h"

#include <string>

namespace zembrastel {

// Copies the file of this path to a new file `name` in the staging folder, and returns that, open. Throws SyncError
// when what was copied is not, or no longer, the version of the fingerprint, for an unsafe path and for a symbolic link
// on the way; Cancelled; and the system's errors.
[[nodiscard]] Descriptor stageCopy(
    const std::string& localFolder, const std::string& path, const Fingerprint& version, const PrivateFolder& staging,
    const std::string& name, const TransferControl& control);

} // namespace zembrastel
