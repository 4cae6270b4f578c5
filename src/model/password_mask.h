// Keeps a password out of texts that people read, send and file.
#pragma once

#include <string>
#include <string_view>

namespace zembrastel {

// The text with dots wherever the password stood. An empty password is none.
[[nodiscard]] std::string withoutPassword(std::string text, std::string_view password);

} // namespace zembrastel
