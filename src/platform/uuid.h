// A random identifier (RFC 4122, version 4) and its text form.
//
// A value; any thread.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    [[nodiscard]] static Uuid random();

    // Reads the hyphenated form, 8-4-4-4-12 hexadecimal digits in either case; nullopt for other texts.
    [[nodiscard]] static std::optional<Uuid> parse(std::string_view text);

    // The hyphenated form with upper-case digits, the only form that the program writes.
    [[nodiscard]] std::string text() const;

    friend auto operator<=>(const Uuid&, const Uuid&) = default;
};

} // namespace zembrastel
