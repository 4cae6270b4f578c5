// Everything that is remembered between runs except passwords, and its JSON form.
//
// Values and pure functions; any thread. Doubles and 64-bit integers survive the round trip exactly.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "model/server_version.h"

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

// Compact JSON; the keys are the names of the fields. Throws SyncError if a text is not UTF-8 or a number not finite.
[[nodiscard]] std::string encode(const SavedState& state);

// Throws SyncError that names the place and the error, without a full stop at its end. `json` is not copied if its
// capacity has 64 more bytes, which readFile() provides.
[[nodiscard]] SavedState decodeSavedState(std::string json);

// The profiles of a saved state, without building the rest: faster. Refuses the same texts with the same errors.
[[nodiscard]] std::vector<Profile> decodeProfiles(std::string json);

// Profiles for another machine, without passwords. A later form has a higher version.
struct ProfileExport {
    static constexpr std::int64_t currentVersion = 1;

    std::int64_t version = currentVersion;
    std::vector<Profile> profiles;
};

// Errors as above; a version that is not the current one is refused.
[[nodiscard]] std::string encode(const ProfileExport& exported);
[[nodiscard]] ProfileExport decodeProfileExport(std::string json);

// A single profile object; errors as above.
[[nodiscard]] std::string encode(const Profile& profile);
[[nodiscard]] Profile decodeProfile(std::string json);

} // namespace zembrastel
