// Everything that is remembered between runs, apart from passwords, and its JSON form.
//
// Values and pure functions; any thread. Doubles and 64-bit integers survive the round trip exactly.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "model/remote_date.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

struct SavedState {
    std::vector<Profile> profiles;                          // in the order the user sees them
    std::map<Uuid, FileMap> baselines;                      // each local file as last uploaded or downloaded
    std::optional<std::map<Uuid, RemoteDates>> remoteDates; // server dates last seen or acknowledged

    friend bool operator==(const SavedState&, const SavedState&) = default;
};

// Compact JSON, keys as the fields are named. Throws SyncError when a text is not UTF-8 or a number is not finite.
[[nodiscard]] std::string encode(const SavedState& state);

// Throws SyncError, naming the place and what is wrong there, without a full stop at the end. Not copied where the text
// has room for 64 bytes more: readFile() leaves that.
[[nodiscard]] SavedState decodeSavedState(std::string json);

// The saved state's profiles alone, without building the rest, which takes part of the time. Errors as above: the same
// texts are refused.
[[nodiscard]] std::vector<Profile> decodeProfiles(std::string json);

// Profiles on their way to another machine, without passwords. A later form has a higher version.
struct ProfileExport {
    static constexpr std::int64_t currentVersion = 1;

    std::int64_t version = currentVersion;
    std::vector<Profile> profiles;
};

// Errors as above; a version that is not the current one is refused.
[[nodiscard]] std::string encode(const ProfileExport& exported);
[[nodiscard]] ProfileExport decodeProfileExport(std::string json);

// One profile object, alone; errors as above.
[[nodiscard]] std::string encode(const Profile& profile);
[[nodiscard]] Profile decodeProfile(std::string json);

} // namespace zembrastel
