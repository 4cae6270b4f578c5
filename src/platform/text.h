// Unicode classes, splitting, encoding, digests and fixed-format dates, on UTF-8 text.
//
// Pure functions; any thread. None depends on the process locale. Bytes that are not valid UTF-8 belong to no class.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

[[nodiscard]] bool isValidUtf8(std::string_view text);

// The Unicode line breaks: U+000A to U+000D, U+0085, U+2028, U+2029.
[[nodiscard]] bool containsLineBreak(std::string_view text);

// A character below U+0020, or one of the line breaks above.
[[nodiscard]] bool containsControl(std::string_view text);

// The Unicode property White_Space, line breaks included.
[[nodiscard]] bool containsWhitespace(std::string_view text);

// The size in bytes of the white-space character (White_Space) at the beginning of `text`; 0 if there is none.
[[nodiscard]] std::size_t leadingWhitespace(std::string_view text);

// The same for a decimal digit of any script (Unicode category Nd).
[[nodiscard]] std::size_t leadingDigit(std::string_view text);

// `text` without white space and line breaks (White_Space) at both ends. A view into `text`.
[[nodiscard]] std::string_view trimmed(std::string_view text);

// `text` without tabs and blanks (U+0009 and Unicode category Zs, no line breaks) at both ends. A view into `text`.
[[nodiscard]] std::string_view trimmedBlanks(std::string_view text);

// `text` without white space at its ends, and with a full stop if it has no end of a sentence.
[[nodiscard]] std::string sentence(std::string_view text);

// The non-empty lines of `text`, separated by any of the line breaks above. Views into `text`.
[[nodiscard]] std::vector<std::string_view> nonEmptyLines(std::string_view text);

// The pieces between separators, empty ones included: "a//b" gives "a", "", "b" and "" gives one empty piece.
[[nodiscard]] std::vector<std::string_view> split(std::string_view text, char separator);

// The same without empty pieces; an empty vector for "".
[[nodiscard]] std::vector<std::string_view> splitNonEmpty(std::string_view text, char separator);

[[nodiscard]] std::string join(const std::vector<std::string_view>& pieces, char separator);

// `text` with ASCII letters in lower case, and other bytes unchanged.
[[nodiscard]] std::string asciiLowercase(std::string_view text);

// Every byte outside the unreserved set of RFC 3986 (letters, digits, "-._~") as "%" and two upper-case digits.
[[nodiscard]] std::string percentEncoded(std::string_view text);

// `text` as users may see it: control characters, invisible ones (such as those that change the writing direction) and
// invalid bytes as \xHH.
[[nodiscard]] std::string printable(std::string_view text);

// Equivalent JSON text with \uXXXX for the characters that printable() escapes. `json` must be valid.
[[nodiscard]] std::string printableJson(std::string_view json);

// The instant of "Wed, 01 Jan 2020 12:34:56 GMT" (RFC 9110, 5.6.7, IMF-fixdate). Accepts other zone names as well.
[[nodiscard]] std::optional<std::chrono::sys_seconds> parseHttpDate(std::string_view text);

// Base64 (RFC 4648, section 4), with "=" at its end where the length requires it.
[[nodiscard]] std::string base64(std::string_view bytes);

// The bytes of `text`, with or without "=" and white space at the ends. nullopt for invalid or incomplete text.
[[nodiscard]] std::optional<std::string> decodedBase64(std::string_view text);

// SHA-256 in 64 lower-case hexadecimal digits.
[[nodiscard]] std::string sha256(std::string_view text);

} // namespace zembrastel
