// One conversation with a profile's server, outside the model.
#pragma once

#include "cli/command.h"
#include "model/profile.h"
#include "transport/ftp_transport.h"

#include <functional>
#include <string>

namespace zembrastel::cli {

// Calls `talk` with a transport to the profile's server, on this thread. An interrupt is thrown as Cancelled, a failure
// as a CommandError: "Cannot ", `aim` (such as "read the remote folder"), the server, and its answer.
void callServer(
    const Profile& profile, const CommandContext& context, const std::string& aim,
    const std::function<void(const FTPTransport&)>& talk);

// The same for `talk` that uses neither password nor login.
void callServerWithoutLogin(
    const Profile& profile, const CommandContext& context, const std::string& aim,
    const std::function<void(const std::shared_ptr<TransferControl>&)>& talk);

// The aim of a comparison: "compare the local folder X with the server".
[[nodiscard]] std::string comparisonAim(const Profile& profile);

// The refusal of a profile whose initial download is still pending, and the check for it.
[[nodiscard]] CommandError downloadPending(const Profile& profile);
void requireDownloaded(const Profile& profile);

// That error for a failure from another place. `consequence` is a sentence for the end.
[[nodiscard]] CommandError serverFailure(
    const Profile& profile, const std::string& aim, const std::string& failure, const std::string& consequence = "");

// The exit code for such a failure.
[[nodiscard]] ExitCode serverExitCode(const std::string& failure);

} // namespace zembrastel::cli
