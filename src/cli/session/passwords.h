// Gets a command's FTP password: from an option of the command line, else from the secret store.
//
// Failures are CommandErrors; an interrupt is thrown as Cancelled. No message contains the password.
#pragma once

#include "cli/command.h"
#include "model/profile.h"

#include <optional>
#include <string>

namespace zembrastel::cli {

// The password that --password-file or --password-command gives; nullopt without these options.
[[nodiscard]] std::optional<std::string> givenPassword(const CommandContext& context);

// The given password, else the stored one. Blocks while the secret store waits for the user.
[[nodiscard]] std::string passwordFor(const Profile& profile, const CommandContext& context);

// Warns that the profile was saved without its password, for this reason.
void warnNotStored(const std::string& reason, Output& output);

// The stored password. The failure names the options that give one instead. For AppModel::PasswordAccess.
[[nodiscard]] std::string readStoredPassword(const Uuid& id);

} // namespace zembrastel::cli
