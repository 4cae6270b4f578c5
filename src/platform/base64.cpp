#include "platform/base64.h"

#include "platform/text.h"

#include <cstddef>
#include <cstdint>

namespace zembrastel {
namespace {

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned digitBits = 6;
constexpr unsigned byteBits = 8;

} // namespace

std::string base64(std::string_view bytes) {
    constexpr std::size_t group = 4;
    std::string text;
    std::uint32_t pending = 0;
    unsigned bits = 0;
    const auto addDigit = [&](std::uint32_t value) { text += digits[value % digits.size()]; };
    for (const char byte : bytes) {
        pending = (pending << byteBits) | static_cast<unsigned char>(byte);
        bits += byteBits;
        for (; bits >= digitBits; bits -= digitBits) addDigit(pending >> (bits - digitBits));
    }
    if (bits > 0) addDigit(pending << (digitBits - bits));
    text.resize((text.size() + group - 1) / group * group, '=');
    return text;
}

std::optional<std::string> decodedBase64(std::string_view text) {
    std::string bytes;
    std::uint32_t pending = 0;
    unsigned bits = 0;
    text = trimmed(text);
    text = text.substr(0, text.find_last_not_of('=') + 1);
    for (const char digit : text) {
        const auto value = digits.find(digit);
        if (value == std::string_view::npos) return std::nullopt;
        pending = (pending << digitBits) | static_cast<std::uint32_t>(value);
        bits += digitBits;
        if (bits < byteBits) continue;
        bits -= byteBits;
        bytes += static_cast<char>((pending >> bits) & 0xFFU);
    }
    return bits < digitBits ? std::optional(bytes) : std::nullopt;
}

} // namespace zembrastel
