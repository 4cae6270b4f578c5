// The standard input as a whole, for an option or argument "-".
#pragma once

#include <string>

namespace zembrastel::cli {

// Up to its end. Throws std::filesystem::filesystem_error.
[[nodiscard]] std::string readStandardInput();

} // namespace zembrastel::cli
