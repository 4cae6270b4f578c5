// The backups in a local folder: what is kept there, and how a version comes back.
//
// Blocks its thread on the disk alone; needs no server. Nothing here ever removes a backup. Failures are SyncErrors, or
// the system's errors passed on.
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
    std::string path;                               // that the file had in the local folder
    std::string id;                                 // names the folder of this backup alone
    std::chrono::system_clock::time_point kept;     // when the version was replaced
    std::chrono::system_clock::time_point modified; // when it had last been changed
    std::uint64_t size = 0;                         // bytes

    friend bool operator==(const Backup&, const Backup&) = default;
};

// All of the local folder: the files ordered as a file manager would, the versions of each from the newest to the
// oldest. What is neither a regular file nor named in UTF-8 is left out. Throws Cancelled when the control is stopped.
[[nodiscard]] std::vector<Backup> listBackups(const std::string& localFolder, const TransferControl& control);

struct BackupTotals {
    std::size_t files = 0;
    std::size_t versions = 0;
    std::uint64_t bytes = 0;
};

// Of versions that stand in the order of listBackups().
[[nodiscard]] BackupTotals totalsOf(const std::vector<Backup>& backups);

// Where the version is on the disk. Throws SyncError when a symbolic link stands on the way, or it is gone.
[[nodiscard]] std::filesystem::path placeOf(const std::string& localFolder, const Backup& backup);

struct Restored {
    Fingerprint now;       // of the file that was restored
    bool replaced = false; // was there a file, which is now a backup itself?
};

// Copies the version back to the path it had, where missing folders are made; a file that stands there is backed up
// first. The restored file counts as changed now: by the version's own date it would look older than the server's copy,
// which the next comparison would then offer, or a first download put, in its place. Fails, with the newest local file
// in place, when that file changes meanwhile.
[[nodiscard]] Restored restoreBackup(
    const std::string& localFolder, const Backup& backup, const TransferControl& control);

} // namespace zembrastel
