// Where a command has the FTP password from: an option of the command line, else the secret store.
//
// Failures are CommandErrors; an interrupt is thrown as Cancelled. No message contains the password.
#pragma once

#include "cli/command.h"
#include "model/profile.h"

#include <optional>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// The password that --password-file or --password-command names; nothing without these options.
[[nodiscard]] std::optional<std::string> givenPassword(const Surroundings& around);

// The given password, else the stored one. Blocks while the secret store waits for a person.
[[nodiscard]] std::string passwordFor(const Profile& profile, const Surroundings& around);

// The stored password; a failure says how to give one instead. For AppModel::PasswordAccess.
[[nodiscard]] std::string readStoredPassword(const Uuid& id);

// Without its line break: what counts as the password in a file, an output or an answer.
[[nodiscard]] std::string firstLine(std::string_view text);

// The first line of the output of a program that runs without a shell.
[[nodiscard]] std::string passwordFromCommand(const std::string& commandLine, Interrupt& interrupt);

} // namespace zembrastel::cli
