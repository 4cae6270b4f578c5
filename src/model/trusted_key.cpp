#include "model/trusted_key.h"

#include "platform/text.h"

#include <algorithm>
#include <cstddef>

namespace zembrastel {
namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";
constexpr std::string_view pinBeginning = "sha256//";

std::optional<std::string> bytesOfHex(std::string_view text) {
    std::string bytes;
    std::optional<std::size_t> high;
    for (const char c : text) {
        if (c == ' ' || c == ':') continue;
        const auto digit = hexDigits.find(c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c);
        if (digit == std::string_view::npos) return std::nullopt;
        if (high) bytes += static_cast<char>(*high * hexDigits.size() + digit);
        high = high ? std::nullopt : std::optional(digit);
    }
    return high ? std::nullopt : std::optional(bytes);
}

} // namespace

std::optional<KeyHash> KeyHash::parse(std::string_view text) {
    const auto bytes =
        text.starts_with(pinBeginning) ? decodedBase64(text.substr(pinBeginning.size())) : bytesOfHex(text);
    KeyHash hash;
    if (!bytes || bytes->size() != hash.bytes.size()) return std::nullopt;
    std::ranges::transform(*bytes, hash.bytes.begin(), [](char byte) { return static_cast<std::uint8_t>(byte); });
    return hash;
}

std::string KeyHash::text() const {
    std::string digits;
    for (const auto byte : bytes) {
        digits += hexDigits[byte / hexDigits.size()];
        digits += hexDigits[byte % hexDigits.size()];
    }
    return digits;
}

std::string KeyHash::grouped() const {
    constexpr std::size_t group = 4;
    std::string groups = text();
    for (std::size_t at = groups.size() - group; at > 0; at -= group) groups.insert(at, 1, ' ');
    return groups;
}

std::string KeyHash::pin() const {
    return std::string(pinBeginning) + base64({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace zembrastel
