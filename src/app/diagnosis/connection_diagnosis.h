// Why a server was not reached, or did not let the profile in.
//
// Pure functions; any thread.
#pragma once

#include "app/diagnosis/finding.h"
#include "model/profile.h"

#include <optional>
#include <string_view>

namespace zembrastel {

// "curl: (28) Timeout was reached" has 28; what is no such text has 0.
[[nodiscard]] int curlCode(std::string_view failure);

// Of a conversation in which nobody answered at the port.
[[nodiscard]] Finding unreached(const Profile& profile, const Transcript& answer);

// Why there was a connection and no login; nothing where there was one.
[[nodiscard]] std::optional<Finding> refusedBeforeLogin(const Profile& profile, const Transcript& answer);

// Did the server refuse because there are too many connections already?
[[nodiscard]] bool tellsOfTooMany(const Transcript& answer);

// Of a server that hangs up, for that reason or another.
[[nodiscard]] Finding turnedAway(const Transcript& answer);

} // namespace zembrastel
