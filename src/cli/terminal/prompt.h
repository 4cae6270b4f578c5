// Input of the user: questions at the terminal, and the standard input as a whole.
//
// Used on the main thread. An interrupt of a question is thrown as Cancelled, a failure as
// std::filesystem::filesystem_error.
#pragma once

#include "cli/terminal/interrupt.h"

#include <string>
#include <string_view>

namespace zembrastel::cli {

// Whether the standard input is a terminal: only then ask.
[[nodiscard]] bool canAsk();

// Does not show what the user types.
[[nodiscard]] std::string askPassword(const std::string& question, Interrupt& interrupt);

// True if the user types yes; every other answer is no.
[[nodiscard]] bool askYesOrNo(const std::string& question, Interrupt& interrupt);

// All of the standard input, for an option or argument "-".
[[nodiscard]] std::string readStandardInput();

// The first line of a text without its line break: what counts as the password in a file, an output or an answer.
[[nodiscard]] std::string firstLine(std::string_view text);

} // namespace zembrastel::cli
