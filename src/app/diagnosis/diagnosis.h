// What a look at a server means for a profile, in words for the site owner and for the hoster.
//
// A pure function; any thread.
#pragma once

#include "app/diagnosis/finding.h"
#include "model/profile.h"
#include "transport/server_probe.h"

#include <vector>

namespace zembrastel {

// In the order in which things are come to: whatever cannot be reached because of one that is wrong is left out.
[[nodiscard]] std::vector<Finding> diagnose(const Profile& profile, const ServerObservations& seen);

} // namespace zembrastel
