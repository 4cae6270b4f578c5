// Unicode classes, splitting, encoding, comparison and fixed-format dates, on UTF-8 text.
//
// Pure functions; any thread. None depends on the process locale, save compareNames and nameSortKey, which order names
// as the user's language does. Bytes that are not valid UTF-8 belong to no class.
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

// How many bytes the white-space character (White_Space) that `text` begins with takes; 0 when it begins with none.
[[nodiscard]] std::size_t leadingWhitespace(std::string_view text);

// The same for a decimal digit of any script (Unicode category Nd).
[[nodiscard]] std::size_t leadingDigit(std::string_view text);

// Without the white space and line breaks (Unicode property White_Space) at both ends. A view into `text`.
[[nodiscard]] std::string_view trimmed(std::string_view text);

// Without the tabs and blanks (U+0009 and Unicode category Zs: no line break) at both ends. A view into `text`.
[[nodiscard]] std::string_view trimmedBlanks(std::string_view text);

// `text` without white space at its ends, and with a full stop unless it ends a sentence already.
[[nodiscard]] std::string sentence(std::string_view text);

// The lines of `text`, ended by any of the line breaks above, without the empty ones. Views into `text`.
[[nodiscard]] std::vector<std::string_view> nonEmptyLines(std::string_view text);

// The pieces between separators, empty ones included: "a//b" gives "a", "", "b" and "" gives one empty piece.
[[nodiscard]] std::vector<std::string_view> split(std::string_view text, char separator);

// The same without the empty pieces; nothing for "".
[[nodiscard]] std::vector<std::string_view> splitNonEmpty(std::string_view text, char separator);

[[nodiscard]] std::string join(const std::vector<std::string_view>& pieces, char separator);

// `text` with each ASCII letter in lower case, other bytes as they are.
[[nodiscard]] std::string asciiLowercase(std::string_view text);

// Every byte outside the unreserved set of RFC 3986 (letters, digits, "-._~") as "%" and two upper-case digits.
[[nodiscard]] std::string percentEncoded(std::string_view text);

// `text` for a person to read: control characters, invisible ones (such as those that turn the writing direction) and
// invalid bytes as \xHH, all else as it is.
[[nodiscard]] std::string printable(std::string_view text);

// JSON text of the same meaning, in which what printable() spells out is \uXXXX. It must be valid.
[[nodiscard]] std::string printableJson(std::string_view json);

// Equal for names that differ only in case or in Unicode normalization form: where file systems ignore these, such
// names are one file. The text must be valid UTF-8.
[[nodiscard]] std::string foldedName(std::string_view name);

// Negative, zero or positive as `a` sorts before, with or after `b` in a file manager: runs of digits by value, case
// ignored, by the rules of the user's language.
[[nodiscard]] int compareNames(std::string_view a, std::string_view b);

// Bytes that compare as compareNames compares the names themselves. For sorting many: a name is then looked at once.
[[nodiscard]] std::string nameSortKey(std::string_view name);

// The instant of "Wed, 01 Jan 2020 12:34:56 GMT" (RFC 9110, 5.6.7, IMF-fixdate; other zone names are read as well).
[[nodiscard]] std::optional<std::chrono::sys_seconds> parseHttpDate(std::string_view text);

} // namespace zembrastel
