// Removes a password from texts before users see, send or save them.
#pragma once

#include <string>
#include <string_view>

namespace zembrastel {

// The text with dots in place of the password. An empty password changes nothing.
[[nodiscard]] std::string withoutPassword(std::string text, std::string_view password);

} // namespace zembrastel
