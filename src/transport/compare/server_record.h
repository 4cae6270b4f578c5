// The rule beside shouldOffer(): whether the server's file is another version than the recorded one, older or newer.
//
// Pure functions of dates and sizes; any thread.
#pragma once

#include "model/fingerprint.h"
#include "model/server_version.h"

#include <chrono>
#include <optional>
#include <vector>

namespace zembrastel {

// Recorded instead of a date if the user left a file missing on the server. No file has this date.
inline constexpr RemoteDate leftMissing{};

// The records of one file from the last synchronisation; null for a missing record.
struct RecordedFile {
    const Fingerprint* local = nullptr;     // the local version that was uploaded or downloaded
    const RemoteDate* remoteDate = nullptr; // the server's date of that version, or of one that the user saw since
    const Fingerprint* announced = nullptr; // with the size of a version of that date
};

// The shift of the server's dates since they were recorded, if all files have the same one: a change of the server's
// clock or time zone, not of files. `differences` are found minus recorded dates, one for each file with its recorded
// size. Time zones differ by multiples of 15 minutes; any other common difference is a change of all files. Zero if
// there is no shift, and for fewer than three files, which another user may have touched together.
[[nodiscard]] std::chrono::seconds commonShift(const std::vector<std::chrono::duration<double>>& differences);

// True if `found` is another version than the recorded one: its date, less the shift, differs from the recorded date by
// more than a second, or its size is not recorded. False if there is no record.
[[nodiscard]] bool differsFromRecord(
    const ServerVersion& found, const RecordedFile& recorded, std::chrono::seconds shift);

// True if it is the version that was recorded or announced with this date and size.
[[nodiscard]] bool isVersion(const ServerVersion& found, RemoteDate modified, std::uint64_t size);

} // namespace zembrastel
