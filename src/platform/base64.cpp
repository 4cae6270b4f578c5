#include "platform/base64.h"

#include "platform/text.h"

#include <cstddef>
#include <openssl/evp.h>

namespace zembrastel {
namespace {

constexpr std::size_t digitsInGroup = 4;
constexpr std::size_t bytesInGroup = 3;

const unsigned char* asBytes(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

// A string has room for the zero that libcrypto writes after the last character.
unsigned char* bufferOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

} // namespace

std::string base64(std::string_view bytes) {
    std::string text((bytes.size() + bytesInGroup - 1) / bytesInGroup * digitsInGroup, '\0');
    EVP_EncodeBlock(bufferOf(text), asBytes(bytes), static_cast<int>(bytes.size()));
    return text;
}

std::optional<std::string> decodedBase64(std::string_view text) {
    std::string digits(trimmed(text));
    digits.resize(digits.find_last_not_of('=') + 1);
    // libcrypto accepts "=" everywhere, and drops some other characters at the end.
    constexpr auto allDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t rest = digits.size() % digitsInGroup;
    if (rest == 1 || digits.find_first_not_of(allDigits) != std::string::npos) return std::nullopt;
    const std::size_t missing = rest == 0 ? 0 : digitsInGroup - rest;
    digits.append(missing, '=');
    std::string bytes(digits.size() / digitsInGroup * bytesInGroup, '\0');
    if (EVP_DecodeBlock(bufferOf(bytes), asBytes(digits), static_cast<int>(digits.size())) < 0) return std::nullopt;
    bytes.resize(bytes.size() - missing);
    return bytes;
}

} // namespace zembrastel
