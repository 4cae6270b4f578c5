// The rule beside shouldOffer(): is the server's file another version than the one that was recorded, whichever side is
// newer?
//
// Pure functions of dates and sizes; any thread.
#pragma once

#include "model/fingerprint.h"
#include "model/remote_date.h"
#include "model/server_version.h"

#include <chrono>
#include <optional>
#include <vector>

namespace zembrastel {

// Recorded in place of a date where the user left a file missing on the server. No version of a file has this date.
inline constexpr RemoteDate leftMissing{};

// What is known of one file from the last synchronisation. Where a pointer is null, nothing is.
struct RecordedFile {
    const Fingerprint* local = nullptr;     // the local version that was uploaded or downloaded
    const RemoteDate* remoteDate = nullptr; // the server's date, of that or of a version that the user has seen since
    const Fingerprint* announced = nullptr; // of the size of a version with that date
};

// How far the dates that the server reports have moved since they were recorded, where all files moved alike: a change
// of the server's clock or time zone, which changed no file. `differences` are found minus recorded, one for each file
// that still has its recorded size. Zones differ by multiples of 15 minutes, so any other common difference is a real
// change of all files. Zero where there is no shift, and for fewer than three files, which somebody may have touched
// together.
[[nodiscard]] std::chrono::seconds commonShift(const std::vector<std::chrono::duration<double>>& differences);

// Is `found` another version than the recorded one? Either its date, less the shift, differs by more than a second from
// the recorded date, or its size is none that is recorded. False where nothing is recorded.
[[nodiscard]] bool differsFromRecord(
    const ServerVersion& found, const RecordedFile& recorded, std::chrono::seconds shift);

// Is it the version that was recorded or announced with this date and size?
[[nodiscard]] bool isVersion(const ServerVersion& found, RemoteDate modified, std::uint64_t size);

} // namespace zembrastel
