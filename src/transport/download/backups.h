// The backups in a local folder: their list, and the restoring of a version.
//
// Blocks its thread on the disk only; needs no server. Never removes a backup. Failures are SyncErrors, or the system's
// errors passed on.
#pragma once

#include "model/fingerprint.h"
#include "transport/transfer_control.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// One version of a file that was replaced.
struct Backup {
    std::string path;                               // of the file in the local folder
    std::string id;                                 // names the folder of this backup
    std::chrono::system_clock::time_point kept;     // when the version was replaced
    std::chrono::system_clock::time_point modified; // when the version was last changed
    std::uint64_t size = 0;                         // bytes

    friend bool operator==(const Backup&, const Backup&) = default;
};

// All backups of the local folder: the files in the order of a file manager, the versions of each from the newest to
// the oldest. Includes only regular files with UTF-8 names. Throws Cancelled if the control is stopped.
[[nodiscard]] std::vector<Backup> listBackups(const std::string& localFolder, const TransferControl& control);

struct BackupTotals {
    std::size_t files = 0;
    std::size_t versions = 0;
    std::uint64_t bytes = 0;
};

// Of versions in the order of listBackups().
[[nodiscard]] BackupTotals totalsOf(const std::vector<Backup>& backups);

// The path of the version on the disk. Throws SyncError if a symbolic link is on the way, or the version is gone.
[[nodiscard]] std::filesystem::path placeOf(const std::string& localFolder, const Backup& backup);

struct Restored {
    Fingerprint now;       // of the restored file
    bool replaced = false; // true if a local file was replaced, which is now a backup itself
};

// Copies the version back to its path and makes missing folders; a file at that path is backed up first. The restored
// file gets the present date: with the version's own date it would be older than the server's copy, which the next
// comparison would offer, or a first download install, in its place. If the local file changes meanwhile, it fails and
// leaves the newest local file in place.
[[nodiscard]] Restored restoreBackup(
    const std::string& localFolder, const Backup& backup, const TransferControl& control);

} // namespace zembrastel
