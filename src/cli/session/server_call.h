// One conversation with a profile's server, outside the model.
#pragma once

#include "cli/command.h"
#include "model/profile.h"
#include "transport/ftp_transport.h"

#include <functional>
#include <string>

namespace zembrastel::cli {

// Has `talk` use the server, with the profile's password, on this thread; an interrupt ends it as Cancelled. A failure
// becomes a CommandError: "Cannot ", `aim` ("read the remote folder"), the server, and what it said.
void callServer(
    const Profile& profile, const Surroundings& around, const std::string& aim,
    const std::function<void(const FTPTransport&)>& talk);

// That error, for a failure that was met elsewhere. `consequence` is a sentence for the end.
[[nodiscard]] CommandError serverFailure(
    const Profile& profile, const std::string& aim, const std::string& failure, const std::string& consequence = "");

} // namespace zembrastel::cli
