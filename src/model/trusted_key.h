// The public key of a server, and the user's trust in one.
//
// Values; any thread.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

// The SHA-256 of a server's public key (SubjectPublicKeyInfo, in DER).
struct KeyHash {
    std::array<std::uint8_t, 32> bytes{};

    // Reads 64 hexadecimal digits, also with blanks or colons between them, or curl's form, "sha256//" and Base64.
    // nullopt for other texts.
    [[nodiscard]] static std::optional<KeyHash> parse(std::string_view text);

    // 64 hexadecimal digits in upper case.
    [[nodiscard]] std::string text() const;

    // 16 groups of four digits, with a blank between two.
    [[nodiscard]] std::string grouped() const;

    // "sha256//" and Base64, the form of curl's option "pinnedpubkey".
    [[nodiscard]] std::string pin() const;

    friend bool operator==(const KeyHash&, const KeyHash&) = default;
};

// A key that the user trusts, whatever the server's certificate says: on connections to this host and port the program
// accepts this key and no other.
struct TrustedKey {
    KeyHash key;
    std::string host;
    std::int64_t port = 0;
    std::chrono::sys_seconds since{}; // the user's decision

    friend bool operator==(const TrustedKey&, const TrustedKey&) = default;
};

} // namespace zembrastel
