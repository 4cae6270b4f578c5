#include "platform/name_order.h"
#include "platform/text.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::string_view_literals;
using Pieces = std::vector<std::string_view>;

// The searches go through plain text in steps of several bytes: whatever is sought must be found at every distance from
// its beginning and end.
void expectEverywhere(bool (*search)(std::string_view), bool found, const Pieces& samples) {
    for (const auto sample : samples) {
        for (std::size_t before = 0; before < 18; ++before) {
            for (const std::size_t after : {0U, 1U, 9U}) {
                const auto text = std::string(before, '!').append(sample).append(after, '~');
                EXPECT_EQ(search(text), found) << printable(text);
            }
        }
    }
}

TEST(Text, BrokenEncodingIsNoticedAnywhere) {
    expectEverywhere(isValidUtf8, true, {"", "plain", "caf\u00E9", "\U0001F600", "\xEF\xBF\xBF", "a\0b"sv});
    expectEverywhere(
        isValidUtf8, false,
        {"\x80", "\xBF", "\xC3", "\xC0\xAF", "\xE2\x82", "\xE2\x82 ", "\xED\xA0\x80", "\xF0\x9F\x98",
         "\xF4\x90\x80\x80", "\xF0\x80\x80\xAF", "\xFF"});
}

TEST(Text, LineBreaksAndBlanksAreRecognisedExactly) {
    expectEverywhere(
        containsLineBreak, true,
        {"\n", "\v", "\f", "\r", "\u00E9\u0085", "\u2028", "\u2029", "\xC2\n", "\xE2\x80\r", "\xE2\u2028",
         "\xE1\xC2\u0085"});
    // Bytes of line breaks inside other characters or cut off, and white space that breaks no line.
    expectEverywhere(containsLineBreak, false, {" \t\u00A0\u2003", "\x85", "\xE2\x80", "\u2027\u202A\u0185", "\0"sv});
    expectEverywhere(
        containsWhitespace, true, {" ", "\t", "\r", "\u0085", "\u00A0", "\u1680", "\u2003", "\u2028", "\u3000"});
    expectEverywhere(containsWhitespace, false, {"", "caf\u00E9", "\u200B", "\x85\xA0", "\xE3\x80"});
}

TEST(Text, SplittingLosesNoPiece) {
    EXPECT_EQ(trimmed("\r\n\t\u3000 a \u00A0 b\u0085\u2028 "), "a \u00A0 b");
    EXPECT_EQ(trimmed("\x85 a \xE2\x80"), "\x85 a \xE2\x80");
    EXPECT_EQ(trimmedBlanks("\t\u3000\na\r\u00A0\t"), "\na\r");
    EXPECT_EQ(nonEmptyLines("a\r\nb\n\n c\u2028d\u0085\ve"), (Pieces{"a", "b", " c", "d", "e"}));
    EXPECT_EQ(join(split(":a::b:", ':'), ':'), ":a::b:");
}

TEST(Text, EncodedTextCannotActOnUrlsOrScreens) {
    EXPECT_EQ(percentEncoded("aZ09-._~ #?%/\u00E9\x7F\0"sv), "aZ09-._~%20%23%3F%25%2F%C3%A9%7F%00");
    EXPECT_EQ(printable("caf\u00E9 \U0001F600 \\x"), "caf\u00E9 \U0001F600 \\x");
    EXPECT_EQ(printable("\u2764\uFE0F \u0601\u0627 \u05D0"), "\u2764\uFE0F \u0601\u0627 \u05D0");
    for (const auto* hidden :
         {"\u202E", "\u2066", "\u200F", "\u061C", "\u200D", "\u00AD", "\uFEFF", "\u3164", "\uFFF9", "\u2029",
          "\U000E0041"}) {
        EXPECT_TRUE(printable(hidden).starts_with("\\x")) << printable(hidden);
    }
    EXPECT_EQ(printable("a\x1B[2J\n\x7F\u009Bz\0\xFF caf\xE9"sv), "a\\x1B[2J\\x0A\\x7F\\xC2\\x9Bz\\x00\\xFF caf\\xE9");
    EXPECT_EQ(
        printableJson("{\"caf\u00E9\":\"\u202E\x7F\U000E0041 \u2764\uFE0F\"}"),
        "{\"caf\u00E9\":\"\\u202E\\u007F\\uDB40\\uDC41 \u2764\uFE0F\"}");
    EXPECT_EQ(asciiLowercase("AZ=D\u0130R\u00C9"), "az=d\u0130r\u00C9");
}

TEST(Text, NamesSortAsInAFileManagerInAnyLocale) {
    const std::string longName(300, 'x');
    const std::vector<std::string> ascending{
        "",       "_",      "apple",  "Banana",           "eb",           "\u00E9c",      "file9",
        "FILE10", "README", "resume", "r\u00E9sum\u00E9", longName + "2", longName + "10"};
    for (std::size_t i = 1; i < ascending.size(); ++i) {
        const auto& a = ascending[i - 1];
        const auto& b = ascending[i];
        EXPECT_LT(compareNames(a, b), 0) << a << " and " << b;
        EXPECT_GT(compareNames(b, a), 0) << a << " and " << b;
        EXPECT_LT(nameSortKey(a), nameSortKey(b)) << a << " and " << b;
        EXPECT_EQ(compareNames(b, asciiLowercase(b)), 0) << b;
        EXPECT_EQ(nameSortKey(b), nameSortKey(asciiLowercase(b))) << b;
    }
    EXPECT_EQ(nameSortKey("a\0b"sv), nameSortKey("ab")) << "as they compare";
}

} // namespace
} // namespace zembrastel
