// What observations of a server mean for a profile, in words for the site owner and for the hosting provider.
//
// A pure function; any thread.
#pragma once

#include "app/diagnosis/finding.h"
#include "model/profile.h"
#include "transport/server_probe.h"

#include <vector>

namespace zembrastel {

// In the order of the conversation. What a fault makes unreachable is not reported.
[[nodiscard]] std::vector<Finding> diagnose(const Profile& profile, const ServerObservations& seen);

} // namespace zembrastel
