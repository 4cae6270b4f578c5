// The private copy of a local file that is sent in its place, so that later edits cannot get into an upload.
//
// Where the file system shares blocks between files, the copy of a larger file is a nameless one beside the original:
// it takes no room and no time, and nothing of it is left by a program that is killed. Elsewhere it is in the staging
// folder, if that has the room.
#pragma once

#include "model/fingerprint.h"
#include "platform/descriptor.h"
#include "platform/private_folder.h"
#include "transport/transfer_control.h"

#include <cstdint>
#include <string>

namespace zembrastel {

// Copies the file of this path, to a new file `name` in the staging folder if it takes one, and returns the copy, open.
// Throws SyncError when what was copied is not, or no longer, the version of the fingerprint, for an unsafe path and
// for a symbolic link on the way; when there is no room for the copy, before any is taken; Cancelled; and the system's
// errors.
[[nodiscard]] Descriptor stageCopy(
    const std::string& localFolder, const std::string& path, const Fingerprint& version, const PrivateFolder& staging,
    const std::string& name, const TransferControl& control);

// A part of a staged copy, as a new file `name` in the staging folder, in place of one of that name. Throws the
// system's errors.
[[nodiscard]] Descriptor stagePart(
    int copy, std::uint64_t begin, std::uint64_t length, const PrivateFolder& staging, const std::string& name);

// Is `part` the same as these bytes of the copy, from the first to the last? Throws the system's errors.
[[nodiscard]] bool isPartOf(int copy, std::uint64_t begin, std::uint64_t length, int part);

} // namespace zembrastel
