// Base64 (RFC 4648, section 4).
//
// Pure functions; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

// With "=" at its end where the length requires it.
[[nodiscard]] std::string base64(std::string_view bytes);

// The bytes of `text`, with or without "=" and white space at the ends. nullopt for invalid or incomplete text.
[[nodiscard]] std::optional<std::string> decodedBase64(std::string_view text);

} // namespace zembrastel
