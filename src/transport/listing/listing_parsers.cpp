#include "transport/listing/listing_parsers.h"

#include "model/error.h"
#include "platform/text.h"
#include "transport/curl/curl_configuration.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace zembrastel {
namespace {

// Calls `take` with every non-empty line, without its line feed and one carriage return before it.
template <class Take>
void forEachLine(std::string_view text, Take take) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!line.empty()) take(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

void requireValidName(std::string_view name) {
    if (!validName(name)) throw SyncError("The server returned an unsafe filename.");
}

constexpr char lowercase(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte; }

// True if the text starts with this lower-case ASCII `word`, ignoring case.
bool startsWith(std::string_view text, std::string_view word) {
    if (text.size() < word.size()) return false;
    return std::ranges::equal(
        text.substr(0, word.size()), word, [](char byte, char expected) { return lowercase(byte) == expected; });
}

bool isWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() && startsWith(text, word);
}

// The values of the facts of one MLSD line, each of the first fact with that key.
struct Facts {
    std::optional<std::string_view> type;
    std::optional<std::string_view> modify;
    std::optional<std::string_view> size;
    std::optional<std::string_view> mode;
};

// Takes the value of a fact with this key; the key includes "=".
void takeFact(std::optional<std::string_view>& value, std::string_view fact, std::string_view key) {
    if (!value && startsWith(fact, key)) value = fact.substr(key.size());
}

Facts readFacts(std::string_view text) {
    Facts facts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        const auto fact = text.substr(0, end);
        switch (fact.empty() ? ' ' : lowercase(fact.front())) {
        case 't':
            takeFact(facts.type, fact, "type=");
            break;
        case 'm':
            takeFact(facts.modify, fact, "modify=");
            break;
        case 's':
            takeFact(facts.size, fact, "size=");
            break;
        case 'u':
            takeFact(facts.mode, fact, "unix.mode=");
            break;
        default:
            break;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return facts;
}

// Nullopt if the text is not a number of bytes.
std::optional<std::uint64_t> byteCount(std::string_view text) {
    std::uint64_t count = 0;
    const auto* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, count);
    return read.ec == std::errc() && read.ptr == end ? std::optional(count) : std::nullopt;
}

// Reads one line from left to right. Each step takes as much as possible and is never undone: columns separated by
// white space can be divided in only one way.
class Columns {
public:
    explicit Columns(std::string_view line) : rest(line) {}

    [[nodiscard]] std::string_view remaining() const { return rest; }

    bool oneOf(std::string_view set) {
        if (rest.empty() || !std::ranges::any_of(set, [this](char byte) { return byte == rest.front(); })) return false;
        rest.remove_prefix(1);
        return true;
    }

    bool everyOf(std::string_view set, std::size_t count) {
        for (; count != 0; --count) {
            if (!oneOf(set)) return false;
        }
        return true;
    }

    bool word(std::string_view expected) {
        if (!startsWith(rest, expected)) return false;
        rest.remove_prefix(expected.size());
        return true;
    }

    bool oneWhitespace() { return take(whitespaceSize()); }

    bool whitespace() {
        if (!oneWhitespace()) return false;
        while (oneWhitespace()) {
        }
        return true;
    }

    bool nonWhitespace() {
        if (rest.empty() || whitespaceSize() != 0) return false;
        do {
            rest.remove_prefix(1);
        } while (!rest.empty() && whitespaceSize() == 0);
        return true;
    }

    bool digits(std::size_t min = 1, std::size_t max = std::string_view::npos) {
        std::size_t count = 0;
        while (count < max && take(digitSize())) ++count;
        return count >= min;
    }

private:
    std::string_view rest;

    bool take(std::size_t size) {
        rest.remove_prefix(size);
        return size != 0;
    }

    [[nodiscard]] std::size_t whitespaceSize() const {
        if (rest.empty()) return 0;
        const char first = rest.front();
        if (static_cast<unsigned char>(first) >= 0x80) return leadingWhitespace(rest);
        return first == ' ' || (first >= '\t' && first <= '\r') ? 1 : 0;
    }

    [[nodiscard]] std::size_t digitSize() const {
        if (rest.empty()) return 0;
        const char first = rest.front();
        if (static_cast<unsigned char>(first) >= 0x80) return leadingDigit(rest);
        return first >= '0' && first <= '9' ? 1 : 0;
    }
};

enum class Kind { file, directory, link };

struct ListLine {
    Kind kind;
    std::string_view name;
    std::string_view size; // digits of any script; empty for a folder of the Windows form
};

// Nullopt if the name contains a line break: then its end is unknown.
std::optional<ListLine> listLine(Kind kind, std::string_view name, std::string_view size) {
    if (containsLineBreak(name)) return std::nullopt;
    return ListLine{kind, name, size};
}

Kind unixKind(char letter) {
    if (letter == 'd') return Kind::directory;
    return letter == 'l' ? Kind::link : Kind::file;
}

// "drwxr-xr-x  2 web  www  4096 Jan  1 12:00 name": one blank ends the last column; further blanks belong to the name.
std::optional<ListLine> unixLine(std::string_view line) {
    Columns columns(line);
    if (!columns.oneOf("d-l") || !columns.everyOf("rwxstST-", 9)) return std::nullopt;
    columns.oneOf("+@."); // an access list, attributes or a security context
    const bool links = columns.whitespace() && columns.digits();
    const bool owner = links && columns.whitespace() && columns.nonWhitespace();
    const bool group = owner && columns.whitespace() && columns.nonWhitespace();
    const bool padded = group && columns.whitespace();
    const std::string_view atSize = columns.remaining();
    const bool size = padded && columns.digits();
    const std::string_view digits = atSize.substr(0, atSize.size() - columns.remaining().size());
    const bool month = size && columns.whitespace() && columns.nonWhitespace();
    const bool day = month && columns.whitespace() && columns.digits();
    const bool time = day && columns.whitespace() && columns.nonWhitespace();
    if (!time || !columns.oneWhitespace()) return std::nullopt;
    return listLine(unixKind(line.front()), columns.remaining(), digits);
}

// "01-02-2026  10:15AM       <DIR>          name": all blanks before the name are padding.
std::optional<ListLine> windowsLine(std::string_view line) {
    Columns columns(line);
    const bool date = columns.digits(2, 2) && columns.oneOf("-") && columns.digits(2, 2) && columns.oneOf("-")
                      && columns.digits(2, 4);
    const bool time = date && columns.whitespace() && columns.digits(1, 2) && columns.oneOf(":") && columns.digits(2, 2)
                      && (columns.word("am") || columns.word("pm"));
    if (!time || !columns.whitespace()) return std::nullopt;
    const bool directory = columns.word("<dir>");
    const std::string_view atSize = columns.remaining();
    if (!directory && !columns.digits()) return std::nullopt;
    const std::string_view digits = atSize.substr(0, atSize.size() - columns.remaining().size());
    if (!columns.whitespace()) return std::nullopt;
    return listLine(directory ? Kind::directory : Kind::file, columns.remaining(), digits);
}

// The permission bits of "0755".
std::optional<unsigned> permissionBits(std::string_view octal) {
    unsigned mode = 0;
    const auto* const end = octal.data() + octal.size();
    const auto [last, error] = std::from_chars(octal.data(), end, mode, 8);
    if (error != std::errc() || last != end) return std::nullopt;
    return mode & 0777U;
}

} // namespace

std::vector<RemoteEntry> parseMLSD(std::string_view text) {
    std::vector<RemoteEntry> entries;
    forEachLine(text, [&](std::string_view line) {
        const std::size_t space = line.find(' ');
        if (space == std::string_view::npos) {
            throw SyncError("The server returned an invalid MLSD directory listing.");
        }
        const Facts facts = readFacts(line.substr(0, space));
        const std::string_view name = line.substr(space + 1);
        if (!facts.type) throw SyncError("The server listing has no file type.");
        const bool directory = isWord(*facts.type, "dir");
        if (!directory && !isWord(*facts.type, "file")) return;
        requireValidName(name);
        entries.push_back(
            {.name = std::string(name),
             .directory = directory,
             .modified = facts.modify ? parseFTPDate(*facts.modify) : std::nullopt,
             .size = facts.size ? byteCount(*facts.size) : std::nullopt,
             .mode = facts.mode ? permissionBits(*facts.mode) : std::nullopt});
    });
    return entries;
}

std::vector<RemoteEntry> parseLIST(std::string_view text) {
    std::vector<RemoteEntry> entries;
    forEachLine(text, [&](std::string_view line) {
        if (line.starts_with("total ")) return;
        std::optional<ListLine> item = unixLine(line);
        if (!item) item = windowsLine(line);
        if (!item) {
            throw SyncError("Cannot safely read this server's directory format. "
                            "The server should support MLSD or standard Unix/Windows LIST.");
        }
        if (item->kind == Kind::link || item->name == "." || item->name == "..") return;
        requireValidName(item->name);
        entries.push_back(
            {.name = std::string(item->name),
             .directory = item->kind == Kind::directory,
             .modified = std::nullopt,
             .size = byteCount(item->size)});
    });
    return entries;
}

bool isCutShort(std::string_view listing) { return !listing.empty() && !listing.ends_with('\n'); }

void keepShown(std::vector<RemoteEntry>& entries, const std::vector<RemoteEntry>& shown) {
    // Sorted, not hashed: a server could choose a million names with the same hash.
    std::vector<std::string_view> names;
    names.reserve(shown.size());
    for (const auto& entry : shown) names.push_back(entry.name);
    std::ranges::sort(names);
    std::vector<bool> taken(names.size(), false);
    std::vector<bool> kept;
    kept.reserve(entries.size());
    for (const auto& entry : entries) {
        const auto found = std::ranges::lower_bound(names, entry.name);
        const bool keep =
            found != names.end() && *found == entry.name && !taken[static_cast<std::size_t>(found - names.begin())];
        if (keep) taken[static_cast<std::size_t>(found - names.begin())] = true;
        kept.push_back(keep);
    }
    // Only now: `names` may refer to the entries.
    std::size_t index = 0;
    std::erase_if(entries, [&](const RemoteEntry&) { return !kept[index++]; });
}

std::optional<RemoteDate> parseFTPDate(std::string_view text) {
    constexpr std::size_t length = 14;
    const std::string_view stamp = text.substr(0, length);
    if (stamp.size() < length || !std::ranges::all_of(stamp, [](char c) { return c >= '0' && c <= '9'; })) {
        return std::nullopt;
    }
    const auto twoDigits = [&stamp](std::size_t at) { return 10 * (stamp[at] - '0') + stamp[at + 1] - '0'; };
    const int year = 100 * twoDigits(0) + twoDigits(2);
    const std::chrono::year_month_day date(
        std::chrono::year(year), std::chrono::month(static_cast<unsigned>(twoDigits(4))),
        std::chrono::day(static_cast<unsigned>(twoDigits(6))));
    const int hour = twoDigits(8);
    const int minute = twoDigits(10);
    const int second = twoDigits(12);
    if (year == 0 || !date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return toRemoteDate(
        std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute)
        + std::chrono::seconds(second));
}

namespace {

// The value of the first header line with this key, which is in lower case and includes the colon.
std::optional<std::string_view> findHeader(std::string_view headers, std::string_view key) {
    std::optional<std::string_view> value;
    forEachLine(headers, [&](std::string_view line) {
        if (!value && startsWith(line, key)) value = trimmed(line.substr(key.size()));
    });
    return value;
}

} // namespace

std::optional<std::string_view> findLastModified(std::string_view headers) {
    return findHeader(headers, "last-modified:");
}

std::optional<std::uint64_t> findContentLength(std::string_view headers) {
    const auto value = findHeader(headers, "content-length:");
    return value ? byteCount(*value) : std::nullopt;
}

} // namespace zembrastel
