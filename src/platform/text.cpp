#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <glib.h>
#include <memory>
#include <openssl/evp.h>
#include <stdexcept>
#include <unicode/locid.h>
#include <unicode/parsepos.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace zembrastel {
namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

// One character and the bytes it takes; `value` is negative for bytes that are not valid UTF-8.
struct CodePoint {
    UChar32 value;
    std::size_t size;
};

// The two macros of ICU narrow integers inside.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

// The text must not be empty. Handing ICU one character's worth of it keeps its 32-bit indices out of long texts.
CodePoint firstCodePoint(std::string_view text) {
    const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), U8_MAX_LENGTH));
    std::int32_t index = 0;
    UChar32 value = 0;
    U8_NEXT(text.data(), index, length, value);
    return {value, static_cast<std::size_t>(index)};
}

CodePoint lastCodePoint(std::string_view text) {
    const std::string_view tail = text.substr(text.size() - std::min<std::size_t>(text.size(), U8_MAX_LENGTH));
    auto index = static_cast<std::int32_t>(tail.size());
    UChar32 value = 0;
    U8_PREV(tail.data(), 0, index, value);
    return {value, tail.size() - static_cast<std::size_t>(index)};
}

#pragma GCC diagnostic pop

bool isWhitespace(UChar32 c) {
    if (c < 0x80) return c == ' ' || (c >= '\t' && c <= '\r');
    return u_isUWhiteSpace(c) != 0;
}

bool isBlank(UChar32 c) {
    if (c < 0x80) return c == ' ' || c == '\t';
    return u_charType(c) == U_SPACE_SEPARATOR;
}

bool isDigit(UChar32 c) {
    if (c < 0x80) return c >= '0' && c <= '9';
    return u_charType(c) == U_DECIMAL_DIGIT_NUMBER;
}

bool isControl(UChar32 c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

// True for characters without a shape of their own that change how their neighbours are shown, or make two texts look
// the same: overrides of the writing direction, line separators, joiners, fillers and tags. False for the selectors of
// an emoji's form.
bool isInvisible(UChar32 c) {
    if (c < 0xA0) return false;
    const auto type = u_charType(c);
    if (type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR) return true;
    if (type == U_FORMAT_CHAR) return u_hasBinaryProperty(c, UCHAR_PREPENDED_CONCATENATION_MARK) == 0;
    return u_hasBinaryProperty(c, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0
           && u_hasBinaryProperty(c, UCHAR_VARIATION_SELECTOR) == 0;
}

// Eight bytes of text at a time, in no particular order.
using Word = std::uint64_t;

constexpr Word each(unsigned char byte) { return Word{0x0101010101010101} * byte; }

constexpr bool anyBeyondAscii(Word word) { return (word & each(0x80)) != 0; }

// Subtraction sets the highest bit of each byte below `limit` (at most 0x80); bytes that had that bit do not count.
constexpr bool anyBelow(Word word, unsigned char limit) { return ((word - each(limit)) & ~word & each(0x80)) != 0; }

constexpr bool anyEqual(Word word, unsigned char byte) { return anyBelow(word ^ each(byte), 1); }

// The first character of a kind, and its size in bytes. If there is none: the end of the text, and 0.
struct Place {
    std::size_t at;
    std::size_t size;
};

// Whether the first character is of the kind sought, and how many bytes to advance.
struct Step {
    bool found;
    std::size_t size;
};

// `suspect` must not clear a word in which a character of the kind begins, and must clear a word of letters.
template <class Suspect, class Look>
Place findFirst(std::string_view text, Suspect suspect, Look look) {
    std::size_t at = 0;
    while (at < text.size()) {
        for (Word word = 0; at + sizeof word <= text.size(); at += sizeof word) {
            std::memcpy(&word, text.data() + at, sizeof word);
            if (suspect(word)) break;
        }
        if (text.size() - at < sizeof(Word)) {
            Word rest = each('a');
            std::memcpy(&rest, text.data() + at, text.size() - at);
            if (!suspect(rest)) break;
        }
        // Checks the suspect word, or the rest that fills no word, character by character.
        for (const std::size_t end = std::min(at + sizeof(Word), text.size()); at < end;) {
            const Step next = look(text.substr(at));
            if (next.found) return {at, next.size};
            at += next.size;
        }
    }
    return {text.size(), 0};
}

template <class Class>
Step characterStep(std::string_view rest, Class belongs) {
    const CodePoint next = firstCodePoint(rest);
    return {belongs(next.value), next.size};
}

// Works on bytes: the first byte of a character never occurs inside another, so no decoding is needed.
Step lineBreakStep(std::string_view rest) {
    constexpr Step goOn{false, 1};
    switch (rest.front()) {
    case '\n':
    case '\v':
    case '\f':
    case '\r':
        return {true, 1};
    case '\xC2':
        return rest.starts_with("\u0085") ? Step{true, 2} : goOn;
    case '\xE2':
        return rest.starts_with("\u2028") || rest.starts_with("\u2029") ? Step{true, 3} : goOn;
    default:
        return goOn;
    }
}

Place findLineBreak(std::string_view text) {
    const auto suspect = [](Word word) {
        return anyBelow(word, '\r' + 1) || anyEqual(word, 0xC2) || anyEqual(word, 0xE2);
    };
    return findFirst(text, suspect, lineBreakStep);
}

Place findControl(std::string_view text) {
    const auto suspect = [](Word word) { return anyBelow(word, ' ') || anyEqual(word, 0xC2) || anyEqual(word, 0xE2); };
    return findFirst(text, suspect, [](std::string_view rest) {
        return static_cast<unsigned char>(rest.front()) < ' ' ? Step{true, 1} : lineBreakStep(rest);
    });
}

Place findWhitespace(std::string_view text) {
    return findFirst(
        text, [](Word word) { return anyBeyondAscii(word) || anyBelow(word, ' ' + 1); },
        [](std::string_view rest) { return characterStep(rest, isWhitespace); });
}

Place findInvalid(std::string_view text) {
    return findFirst(text, anyBeyondAscii, [](std::string_view rest) {
        return characterStep(rest, [](UChar32 c) { return c < 0; });
    });
}

template <class Class>
std::size_t leading(std::string_view text, Class belongs) {
    if (text.empty()) return 0;
    const CodePoint first = firstCodePoint(text);
    return belongs(first.value) ? first.size : 0;
}

template <class Class>
std::string_view trimmedOf(std::string_view text, Class belongs) {
    while (const std::size_t size = leading(text, belongs)) text.remove_prefix(size);
    while (!text.empty()) {
        const CodePoint last = lastCodePoint(text);
        if (!belongs(last.value)) break;
        text.remove_suffix(last.size);
    }
    return text;
}

template <class Keep>
std::vector<std::string_view> splitWhere(std::string_view text, char separator, Keep keep) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        const std::string_view piece = text.substr(0, end);
        if (keep(piece)) pieces.push_back(piece);
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

constexpr bool isUnreserved(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '-'
           || byte == '.' || byte == '_' || byte == '~';
}

void appendHex(std::string& text, std::string_view prefix, char byte) {
    const auto value = static_cast<unsigned char>(byte);
    text += prefix;
    text += hexDigits[value >> 4];
    text += hexDigits[value & 0x0F];
}

// `spell(shown, bytes, codePoint)` appends the escape of a character that is not shown as it is.
std::string withHiddenSpelledOut(std::string_view text, const auto& spell) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const CodePoint next = firstCodePoint(text);
        const std::string_view bytes = text.substr(0, next.size);
        if (isControl(next.value) || isInvisible(next.value)) { // negative values of invalid bytes among them
            spell(shown, bytes, next.value);
        } else {
            shown += bytes;
        }
        text.remove_prefix(next.size);
    }
    return shown;
}

icu::SimpleDateFormat makeHttpDateFormat() {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(u"EEE, dd MMM yyyy HH:mm:ss zzz", icu::Locale("en_US_POSIX"), status);
    if (U_FAILURE(status) != 0) throw std::runtime_error(std::string("No date format: ") + u_errorName(status));
    format.setTimeZone(*icu::TimeZone::getGMT());
    format.setLenient(false);
    return format;
}

constexpr std::size_t digitsInGroup = 4;
constexpr std::size_t bytesInGroup = 3;

const unsigned char* asBytes(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

// A string has room for the zero that libcrypto writes after the last character.
unsigned char* bufferOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

} // namespace

bool isValidUtf8(std::string_view text) { return findInvalid(text).size == 0; }

bool containsLineBreak(std::string_view text) { return findLineBreak(text).size != 0; }

bool containsControl(std::string_view text) { return findControl(text).size != 0; }

bool containsWhitespace(std::string_view text) { return findWhitespace(text).size != 0; }

std::size_t leadingWhitespace(std::string_view text) { return leading(text, isWhitespace); }

std::size_t leadingDigit(std::string_view text) { return leading(text, isDigit); }

std::string_view trimmed(std::string_view text) { return trimmedOf(text, isWhitespace); }

std::string_view trimmedBlanks(std::string_view text) { return trimmedOf(text, isBlank); }

std::string sentence(std::string_view text) {
    std::string result(trimmed(text));
    const bool ended = !result.empty() && std::string_view(".!?").find(result.back()) != std::string_view::npos;
    return ended ? result : result + ".";
}

std::vector<std::string_view> nonEmptyLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const Place end = findLineBreak(text);
        if (end.at != 0) lines.push_back(text.substr(0, end.at));
        text.remove_prefix(end.at + end.size);
    }
    return lines;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    return splitWhere(text, separator, [](std::string_view) { return true; });
}

std::vector<std::string_view> splitNonEmpty(std::string_view text, char separator) {
    return splitWhere(text, separator, [](std::string_view piece) { return !piece.empty(); });
}

std::string join(const std::vector<std::string_view>& pieces, char separator) {
    std::string text;
    for (const std::string_view& piece : pieces) {
        if (&piece != &pieces.front()) text += separator;
        text += piece;
    }
    return text;
}

std::string asciiLowercase(std::string_view text) {
    std::string lower(text);
    for (char& byte : lower) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    return lower;
}

std::string percentEncoded(std::string_view text) {
    std::string encoded;
    encoded.reserve(text.size());
    for (const char byte : text) {
        if (isUnreserved(byte)) {
            encoded += byte;
        } else {
            appendHex(encoded, "%", byte);
        }
    }
    return encoded;
}

std::string printable(std::string_view text) {
    return withHiddenSpelledOut(text, [](std::string& shown, std::string_view bytes, UChar32) {
        for (const char byte : bytes) appendHex(shown, "\\x", byte);
    });
}

std::string printableJson(std::string_view json) {
    return withHiddenSpelledOut(json, [](std::string& shown, std::string_view, UChar32 c) {
        const icu::UnicodeString units(c); // two beyond U+FFFF
        for (std::int32_t i = 0; i < units.length(); ++i) {
            appendHex(shown, "\\u", static_cast<char>(units[i] >> 8));
            appendHex(shown, "", static_cast<char>(units[i] & 0xFF));
        }
    });
}

std::optional<std::chrono::sys_seconds> parseHttpDate(std::string_view text) {
    constexpr std::size_t longest = 256; // bytes, more than any name of a time zone needs
    if (text.size() > longest) return std::nullopt;
    thread_local const icu::SimpleDateFormat format = makeHttpDateFormat(); // threads must not share it
    const icu::UnicodeString date =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    icu::ParsePosition position(0);
    const UDate milliseconds = format.parse(date, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != date.length()) return std::nullopt;
    return std::chrono::sys_seconds(std::chrono::seconds(static_cast<std::int64_t>(std::floor(milliseconds / 1000))));
}

std::string sha256(std::string_view text) {
    const std::unique_ptr<gchar, decltype(&g_free)> digits(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(text.data()), text.size()),
        g_free);
    return digits.get();
}

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
