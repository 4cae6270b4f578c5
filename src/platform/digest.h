// Digests of texts.
//
// Any thread.
#pragma once

#include <string>
#include <string_view>

namespace zembrastel {

// SHA-256 in 64 lower-case hexadecimal digits.
[[nodiscard]] std::string sha256(std::string_view text);

} // namespace zembrastel
