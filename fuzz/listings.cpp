// The two directory listings, against readings that follow their descriptions word by word.
#include "platform/text.h"
#include "promise.h"
#include "targets.h"
#include "transport/listing/listing_parsers.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <unicode/regex.h>

namespace zembrastel::fuzz {
namespace {

constexpr std::string_view breaksNames("/\0\n\v\f\r", 6);

void checkNames(const std::vector<RemoteEntry>& entries, std::string_view text) {
    std::size_t bytes = 0;
    for (const auto& entry : entries) {
        promise(entry.name.find_first_of(breaksNames) == std::string::npos, "no name breaks a path or a line");
        promise(!entry.name.empty() && entry.name != "." && entry.name != "..", "every name is one in this folder");
        promise(text.find(entry.name) != std::string_view::npos, "no name is made up");
        bytes += entry.name.size() + 1;
    }
    promise(bytes <= text.size() + 1, "no line gives two names");
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    for (const auto piece : split(text, '\n')) {
        std::string line(piece);
        if (line.ends_with('\r')) line.pop_back();
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

bool plainlyValid(std::string_view name) {
    const std::string_view pieces[] = {"\u0085", "\u2028", "\u2029"};
    return !name.empty() && name != "." && name != ".." && name.find_first_of(breaksNames) == std::string_view::npos
           && std::ranges::none_of(pieces, [&](auto piece) { return name.find(piece) != std::string_view::npos; });
}

using PlainEntries = std::optional<std::vector<RemoteEntry>>;

PlainEntries plainMLSD(std::string_view text) {
    std::vector<RemoteEntry> entries;
    for (const auto& line : linesOf(text)) {
        const auto space = line.find(' ');
        if (space == std::string::npos) return std::nullopt;
        const std::string facts = asciiLowercase(line.substr(0, space));
        const auto fact = [&](std::string_view key) -> std::optional<std::string> {
            for (const auto piece : splitNonEmpty(facts, ';')) {
                if (piece.starts_with(key)) return std::string(piece.substr(key.size()));
            }
            return std::nullopt;
        };
        const auto type = fact("type=");
        if (!type) return std::nullopt;
        if (*type != "file" && *type != "dir") continue;
        const std::string name = line.substr(space + 1);
        if (!plainlyValid(name)) return std::nullopt;
        const auto modify = fact("modify=");
        entries.push_back({name, *type == "dir", modify ? parseFTPDate(*modify) : std::nullopt});
    }
    return entries;
}

std::unique_ptr<icu::RegexPattern> pattern(const char16_t* text, std::uint32_t flags) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexPattern> made(icu::RegexPattern::compile(text, flags, status));
    promise(U_SUCCESS(status) != 0, "the pattern compiles");
    return made;
}

// The groups of a match of the whole line.
std::optional<std::vector<std::string>> groups(const icu::RegexPattern& pattern, const icu::UnicodeString& line) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(line, status));
    if (matcher->matches(status) == 0) return std::nullopt;
    std::vector<std::string> found(static_cast<std::size_t>(matcher->groupCount()));
    for (std::size_t i = 0; i < found.size(); ++i) {
        matcher->group(static_cast<std::int32_t>(i + 1), status).toUTF8String(found[i]);
    }
    promise(U_SUCCESS(status) != 0, "the line is matched to its end");
    return found;
}

// As regular expressions. Their "." stops at line breaks, here at exactly those that no name may hold.
PlainEntries plainLIST(std::string_view text) {
    static const auto unixForm = pattern(
        uR"(([d\-l])[rwxstST\-]{9}[+@.]?\p{White_Space}+\p{Nd}+\p{White_Space}+\P{White_Space}+\p{White_Space}+)"
        uR"(\P{White_Space}+\p{White_Space}+\p{Nd}+\p{White_Space}+\P{White_Space}+\p{White_Space}+\p{Nd}+)"
        uR"(\p{White_Space}+\P{White_Space}+\p{White_Space}([^\n\u000B\f\r\u0085\u2028\u2029]*))",
        0);
    static const auto windowsForm = pattern(
        uR"(\p{Nd}{2}-\p{Nd}{2}-\p{Nd}{2,4}\p{White_Space}+\p{Nd}{1,2}:\p{Nd}{2}(?:AM|PM)\p{White_Space}+)"
        uR"((<DIR>|\p{Nd}+)\p{White_Space}+([^\n\u000B\f\r\u0085\u2028\u2029]*))",
        UREGEX_CASE_INSENSITIVE);
    std::vector<RemoteEntry> entries;
    for (const auto& line : linesOf(text)) {
        if (line.starts_with("total ")) continue;
        const auto wide = icu::UnicodeString::fromUTF8(line);
        const auto unixGroups = groups(*unixForm, wide);
        const auto found = unixGroups ? unixGroups : groups(*windowsForm, wide);
        if (!found) return std::nullopt;
        const auto& name = found->back();
        if (found->front() == "l" || name == "." || name == "..") continue;
        if (!plainlyValid(name)) return std::nullopt;
        entries.push_back({name, found->front() == "d" || asciiLowercase(found->front()) == "<dir>", std::nullopt});
    }
    return entries;
}

} // namespace

void mlsd(std::string_view input) {
    const auto entries = unlessRefused([&] { return parseMLSD(input); });
    promise(entries == plainMLSD(input), "MLSD is read as it is described");
    if (!entries) return;
    checkNames(*entries, input);
    for (const auto& entry : *entries) {
        if (!entry.modified) continue;
        const double seconds = entry.modified->time_since_epoch().count();
        promise(seconds == std::floor(seconds), "the dates of MLSD are whole seconds");
    }
}

void list(std::string_view input) {
    const auto entries = unlessRefused([&] { return parseLIST(input); });
    if (entries) checkNames(*entries, input);
    // A long line is more than a regular expression takes.
    constexpr std::size_t shortEnough = 1000;
    if (input.size() > shortEnough || !isValidUtf8(input)) return;
    promise(entries == plainLIST(input), "LIST is read as it is described");
}

} // namespace zembrastel::fuzz
