// Questions to the person at the terminal.
//
// Used on the main thread, when the standard input is a terminal. An interrupt is thrown as Cancelled.
#pragma once

#include "cli/terminal/interrupt.h"

#include <string>

namespace zembrastel::cli {

// Is the standard input a terminal?
[[nodiscard]] bool terminalAnswers();

// What is typed is not shown.
[[nodiscard]] std::string askPassword(const std::string& question, Interrupt& interrupt);

// Anything but yes is no.
[[nodiscard]] bool askWhether(const std::string& question, Interrupt& interrupt);

} // namespace zembrastel::cli
