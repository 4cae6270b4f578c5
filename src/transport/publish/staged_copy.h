// The private copy of a local file that is sent instead of it, so that later edits do not get into the upload.
//
// If the file system can share blocks between files, the copy of a larger file is an unnamed file beside the original:
// it takes almost no space and time, and disappears if the program is killed. Otherwise the copy is in the staging
// folder, if that has enough space. Of the many small files of a batch it may be in memory.
#pragma once

#include "model/fingerprint.h"
#include "platform/descriptor.h"
#include "platform/private_folder.h"
#include "transport/transfer_control.h"

#include <cstdint>
#include <string>

namespace zembrastel {

enum class CopyPlace { folder, memoryIfSmall }; // at most 64 KiB are small

// Copies the file of this path, if necessary to a new file `name` in the staging folder, and returns the open copy.
// Throws SyncError if the copied version is not the one of the fingerprint, for an unsafe path, for a symbolic link on
// the way, and if there is not enough space, before any is used. Also throws Cancelled and the system's errors.
[[nodiscard]] Descriptor stageCopy(
    const std::string& localFolder, const std::string& path, const Fingerprint& version, const PrivateFolder& staging,
    const std::string& name, const TransferControl& control, CopyPlace place = CopyPlace::folder);

// Copies a part of a staged copy to the file `name` in the staging folder, replacing an existing one. Throws the
// system's errors.
[[nodiscard]] Descriptor stagePart(
    int copy, std::uint64_t begin, std::uint64_t length, const PrivateFolder& staging, const std::string& name);

// True if `part` is equal to these bytes of the copy. Throws the system's errors.
[[nodiscard]] bool isPartOf(int copy, std::uint64_t begin, std::uint64_t length, int part);

} // namespace zembrastel
