// Why the system takes no more of a file, which curl does not say.
#pragma once

#include <string>

namespace zembrastel {

// In the system's words; empty when the open file does take more.
[[nodiscard]] std::string whyNotWritten(int file);

} // namespace zembrastel
