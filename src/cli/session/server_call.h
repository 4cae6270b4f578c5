// One conversation with a profile's server, outside the model.
#pragma once

#include "cli/command.h"
#include "model/profile.h"
#include "transport/failure.h"
#include "transport/ftp_transport.h"

#include <functional>
#include <optional>
#include <string>

namespace zembrastel::cli {

// What a conversation is for: the message of its failure, marked for translation, with the profile as %1, the server as
// %2, the explanation as %3 and this folder as %4.
struct ServerAim {
    const char* failure;
    std::string folder{};
};

// Calls `talk` with a transport to the profile's server, on this thread. An interrupt is thrown as Cancelled, a failure
// as a CommandError: that of `aim`, with the explanation.
void callServer(
    const Profile& profile, const CommandContext& context, const ServerAim& aim,
    const std::function<void(const FTPTransport&)>& talk, const std::optional<std::string>& password = std::nullopt);

// Makes the profile's folder on the server, with those above it, and says so. Without a password the given or stored
// one is used. Throws as above.
void createRemoteFolder(
    const Profile& profile, const std::optional<std::string>& password, const CommandContext& context);

// The same for `talk` that uses neither password nor login.
void callServerWithoutLogin(
    const Profile& profile, const CommandContext& context, const ServerAim& aim,
    const std::function<void(const std::shared_ptr<TransferControl>&)>& talk);

[[nodiscard]] ServerAim comparisonAim(const Profile& profile);

// The refusal of a profile whose initial download is still pending, and the check for it.
[[nodiscard]] CommandError downloadPending(const Profile& profile);
void requireDownloaded(const Profile& profile);

// That error for a failure from another place. `consequence` is a sentence for the end.
[[nodiscard]] CommandError serverFailure(
    const Profile& profile, const ServerAim& aim, const Failure& failure, const std::string& consequence = "");

// What happened, and what to do next, for the user of a command that ends with this failure.
[[nodiscard]] std::string explainedForCommand(const Failure& failure, const Profile& profile);

// The exit code for such a failure.
[[nodiscard]] ExitCode serverExitCode(const Failure& failure);

} // namespace zembrastel::cli
