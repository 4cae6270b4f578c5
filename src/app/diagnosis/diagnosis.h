// What observations of a server mean for a profile, in words for the site owner and for the hosting provider.
//
// Pure functions; any thread.
#pragma once

#include "app/diagnosis/finding.h"
#include "model/profile.h"
#include "transport/server_probe.h"

#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// In the order of the conversation. What a fault makes unreachable is not reported.
[[nodiscard]] std::vector<Finding> diagnose(const Profile& profile, const ServerObservations& seen);

// Why a server was not reached, or did not let the profile in: parts of the above, in connection_diagnosis.cpp.

// Explains a conversation without any answer at the port.
[[nodiscard]] Finding unreached(const Profile& profile, const Transcript& answer);

// Why there was a connection and no login; nullopt if there was a login.
[[nodiscard]] std::optional<Finding> refusedBeforeLogin(const Profile& profile, const Transcript& answer);

// Whether the server refused because there are too many connections.
[[nodiscard]] bool reportsTooMany(const Transcript& answer);

// Explains a server that hangs up, for that reason or another.
[[nodiscard]] Finding turnedAway(const Profile& profile, const Transcript& answer);

// What happened, in the words of the failure catalogue.
[[nodiscard]] std::string headingOf(const Profile& profile, const Transcript& answer);

} // namespace zembrastel
