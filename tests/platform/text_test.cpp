#include "platform/text.h"

#include <gtest/gtest.h>
#include <thread>

namespace zembrastel {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Pieces = std::vector<std::string_view>;

// The searches go through plain text in steps of several bytes: whatever is sought must be found at every distance from
// its beginning and end.
template <class Check>
void atEveryDistance(std::string_view sample, Check check) {
    for (std::size_t before = 0; before < 18; ++before) {
        for (const std::size_t after : {0U, 1U, 9U}) {
            check(std::string(before, '!') + std::string(sample) + std::string(after, '~'));
        }
    }
}

TEST(Text, BrokenEncodingIsNoticedWhereverItStands) {
    for (const std::string_view sound : {""sv, "plain"sv, "caf\u00E9"sv, "\U0001F600"sv, "\xEF\xBF\xBF"sv, "a\0b"sv}) {
        atEveryDistance(sound, [](const std::string& text) { EXPECT_TRUE(isValidUtf8(text)) << printable(text); });
    }
    for (const std::string_view broken :
         {"\x80"sv, "\xBF"sv, "\xC3"sv, "\xC0\xAF"sv, "\xE2\x82"sv, "\xE2\x82 "sv, "\xED\xA0\x80"sv, "\xF0\x9F\x98"sv,
          "\xF4\x90\x80\x80"sv, "\xF0\x80\x80\xAF"sv, "\xFF"sv}) {
        atEveryDistance(broken, [](const std::string& text) { EXPECT_FALSE(isValidUtf8(text)) << printable(text); });
    }
}

TEST(Text, EveryLineBreakIsFoundAndNothingElseIsTakenForOne) {
    for (const std::string_view found :
         {"\n"sv, "\v"sv, "\f"sv, "\r"sv, "\u00E9\u0085"sv, "\u2028"sv, "\u2029"sv, "\xC2\n"sv, "\xE2\x80\r"sv,
          "\xE2\u2028"sv, "\xE1\xC2\u0085"sv}) {
        atEveryDistance(
            found, [](const std::string& text) { EXPECT_TRUE(containsLineBreak(text)) << printable(text); });
    }
    // Bytes of line breaks inside other characters or cut off, and white space that breaks no line.
    for (const std::string_view none : {" \t\u00A0\u2003"sv, "\x85"sv, "\xE2\x80"sv, "\u2027\u202A\u0185"sv, "\0"sv}) {
        atEveryDistance(
            none, [](const std::string& text) { EXPECT_FALSE(containsLineBreak(text)) << printable(text); });
    }
}

TEST(Text, WhitespaceOfEveryScriptCounts) {
    for (const std::string_view found :
         {" "sv, "\t"sv, "\n"sv, "\u0085"sv, "\u00A0"sv, "\u1680"sv, "\u2003"sv, "\u2028"sv, "\u3000"sv}) {
        atEveryDistance(
            found, [](const std::string& text) { EXPECT_TRUE(containsWhitespace(text)) << printable(text); });
        EXPECT_EQ(leadingWhitespace(std::string(found) + ' '), found.size()) << printable(found);
    }
    for (const std::string_view none : {""sv, "caf\u00E9"sv, "\u200B"sv, "\x85\xA0"sv, "\xE3\x80"sv}) {
        atEveryDistance(
            none, [](const std::string& text) { EXPECT_FALSE(containsWhitespace(text)) << printable(text); });
        EXPECT_EQ(leadingWhitespace(none), 0U) << printable(none);
    }
    EXPECT_EQ(leadingDigit("\u0663"), 2U);
    EXPECT_EQ(leadingDigit("\u00B2"), 0U); // superscript two
    EXPECT_EQ(leadingDigit(""), 0U);
}

TEST(Text, TrimmingTakesBothEndsAndNothingWithin) {
    EXPECT_EQ(trimmed("\r\n\t\u3000 a \u00A0 b\u0085\u2028 "), "a \u00A0 b");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed("\x85 a \xE2\x80"), "\x85 a \xE2\x80");
    EXPECT_EQ(trimmedBlanks("\t\u3000 a\u00A0\t"), "a");
    EXPECT_EQ(trimmedBlanks(" \na\r "), "\na\r");
}

TEST(Text, LinesEndAtEveryBreakAndEmptyOnesAreDropped) {
    EXPECT_EQ(nonEmptyLines("a\r\nb\n\n c\u2028d\u0085\ve"), (Pieces{"a", "b", " c", "d", "e"}));
    EXPECT_EQ(nonEmptyLines("\n\r\n"), Pieces{});
}

TEST(Text, SplittingLosesNoPieceThatMatters) {
    EXPECT_EQ(split("a//b/", '/'), (Pieces{"a", "", "b", ""}));
    EXPECT_EQ(split("", '/'), Pieces{""});
    EXPECT_EQ(splitNonEmpty("/a//b/", '/'), (Pieces{"a", "b"}));
    EXPECT_EQ(splitNonEmpty("", '/'), Pieces{});
    EXPECT_EQ(join(split("/a//b/", '/'), '/'), "/a//b/");
    EXPECT_EQ(join({}, '/'), "");
}

TEST(Text, EncodingLeavesOnlyUnreservedCharacters) {
    EXPECT_EQ(percentEncoded("aZ09-._~"), "aZ09-._~");
    EXPECT_EQ(percentEncoded("a #?%/\u00E9\x7F\0"sv), "a%20%23%3F%25%2F%C3%A9%7F%00");
    EXPECT_EQ(asciiLowercase("TYPE=D\u0130R\u00C9"), "type=d\u0130r\u00C9");
}

TEST(Text, NamesThatCouldForgeTheScreenAreShownHarmless) {
    EXPECT_EQ(printable("caf\u00E9 \U0001F600 \\x"), "caf\u00E9 \U0001F600 \\x");
    EXPECT_EQ(printable("a\x1B[2J\n\x7F\u009Bz\0"sv), "a\\x1B[2J\\x0A\\x7F\\xC2\\x9Bz\\x00");
    EXPECT_EQ(printable("\xFF caf\xE9"), "\\xFF caf\\xE9");
}

TEST(Text, NamesSortAsInAFileManagerWhateverTheLocale) {
    EXPECT_LT(compareNames("file9", "file10"), 0);
    EXPECT_LT(compareNames("img 2.png", "img 12.png"), 0);
    EXPECT_LT(compareNames("apple", "Banana"), 0);
    EXPECT_GT(compareNames("banana", "Apple"), 0);
    EXPECT_EQ(compareNames("README", "readme"), 0);
    EXPECT_LT(compareNames("eb", "\u00E9c"), 0);
    EXPECT_LT(compareNames("resume", "r\u00E9sum\u00E9"), 0);
}

TEST(Text, SortKeysGiveTheSameOrderAsComparing) {
    const std::string longName(300, 'x');
    const std::vector<std::string> names{
        "",        "file9",  "file10",           "File 010",     "README",        "readme", "eb",
        "\u00E9c", "resume", "r\u00E9sum\u00E9", longName + "2", longName + "10", "a\0b"s,  "_"};
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    for (const auto& a : names) {
        for (const auto& b : names) {
            EXPECT_EQ(sign(nameSortKey(a).compare(nameSortKey(b))), sign(compareNames(a, b)))
                << printable(a) << " and " << printable(b);
        }
    }
}

std::optional<std::int64_t> secondsOf(std::string_view date) {
    const auto instant = parseHttpDate(date);
    if (!instant) return std::nullopt;
    return instant->time_since_epoch().count();
}

TEST(Text, HttpDateIsReadToTheSecond) {
    EXPECT_EQ(secondsOf("Wed, 01 Jan 2020 12:34:56 GMT"), 1577882096);
    EXPECT_EQ(secondsOf("Thu, 29 Feb 2024 23:59:59 UTC"), 1709251199);
    EXPECT_EQ(secondsOf("Wed, 31 Dec 1969 23:59:59 GMT"), -1);
    EXPECT_EQ(secondsOf("Wed, 01 Jan 2020 12:34:56 PST"), 1577910896);
}

TEST(Text, HttpDateThatIsNoneIsNotGuessed) {
    const std::string huge(std::size_t{20} << 20, ' ');
    for (const std::string_view text :
         {""sv, "Wed, 01 Jan 2020 12:34:56"sv, "Wed, 01 Jan 2020 12:34:56 GMT x"sv, "Fri, 30 Feb 2024 12:00:00 GMT"sv,
          "Wed, 01 Jan 2020 24:00:00 GMT"sv, "Wed, 01 Foo 2020 12:34:56 GMT"sv, "Wed, 01 Jan 2020 12:34:56 \xFF"sv,
          "2020-01-01T12:34:56Z"sv, std::string_view(huge)}) {
        EXPECT_EQ(secondsOf(text), std::nullopt) << printable(text.substr(0, 100));
    }
}

TEST(Text, ThreadsThatReadDatesAndCompareNamesDoNotDisturbEachOther) {
    std::array<int, 4> wrong{};
    {
        std::vector<std::jthread> threads;
        for (std::size_t hour = 0; hour < wrong.size(); ++hour) {
            threads.emplace_back([hour, &wrong] {
                const std::string date = "Thu, 01 Jan 1970 0" + std::to_string(hour) + ":00:00 GMT";
                for (int i = 0; i < 500; ++i) {
                    wrong[hour] += secondsOf(date) != static_cast<std::int64_t>(hour) * 3600;
                    wrong[hour] += compareNames("file" + std::to_string(i), "file" + std::to_string(i + 1)) >= 0;
                }
            });
        }
    }
    EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

} // namespace
} // namespace zembrastel
