// Sizes, messages and the time of hostile listings, which fuzz/listings.cpp and fuzz/dates.cpp do not check.
#include "transport/listing/listing_parsers.h"

#include "platform/text.h"
#include "support/local_site.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::string_view_literals;
using testing::failureOf;
using Entries = std::vector<RemoteEntry>;
using Lines = std::vector<std::string_view>;

const std::string unsafeName = "The server returned an unsafe filename.";
const std::string unreadable = "Cannot safely read this server's directory format. "
                               "The server should support MLSD or standard Unix/Windows LIST.";
const std::string noNames = "The server returned an invalid MLSD directory listing.";
const std::string noType = "The server listing has no file type.";

RemoteEntry file(std::string name) { return {std::move(name), false, std::nullopt}; }

RemoteEntry folder(std::string name) { return {std::move(name), true, std::nullopt}; }

// Each of the lines must be refused, although the line before it is good.
template <class Parse>
void expectRefusal(Parse parse, const std::string& message, std::string_view good, const Lines& lines) {
    for (const auto line : lines) {
        const auto text = std::string(good).append("\r\n").append(line);
        EXPECT_EQ(failureOf([&] { return parse(text); }), message) << printable(text);
    }
}

TEST(ListedSizes, InvalidSizesAreIgnored) {
    const auto sizes = [](const Entries& entries) {
        std::vector<std::optional<std::uint64_t>> all;
        for (const auto& entry : entries) all.push_back(entry.size);
        return all;
    };
    EXPECT_EQ(
        sizes(parseMLSD("type=file;Size=3000000000; a\ntype=file; b\nsize=-1;type=file; c\n"
                        "size=99999999999999999999;type=file; d")),
        (std::vector<std::optional<std::uint64_t>>{3'000'000'000, std::nullopt, std::nullopt, std::nullopt}));
    EXPECT_EQ(
        sizes(parseLIST("-rw-r--r--   1 web      www         4096 Jan  1 12:00 a\n"
                        "-rw-r--r--   1 web      www         \u0663 Jan  1 12:00 b\n"
                        "01-02-2026  10:15AM                 1234 c\n01-02-2026  10:15AM       <DIR>          d")),
        (std::vector<std::optional<std::uint64_t>>{4096, std::nullopt, 1234, std::nullopt}));
    EXPECT_EQ(findContentLength("Last-Modified: x\r\nContent-Length: 14\r\n"), 14U);
    EXPECT_FALSE(findContentLength("Content-Length: many\r\n"));
}

TEST(Listing, UnclearLineRefusesAll) {
    const auto good = "type=file; good";
    expectRefusal(parseMLSD, noNames, good, {"type=file;", "\r\r\n"});
    expectRefusal(parseMLSD, noType, good, {"size=3; a", " a", "type; a"});
    expectRefusal(
        parseMLSD, unsafeName, good,
        {"type=file; ..", "type=dir; .", "type=file; ", "type=file; a/b", "type=file; a\rb", "type=file; a\r\r\n",
         "type=file; a\u2028", "type=file; a\0b"sv});
    const auto goodLine = "-rw-r--r-- 1 w w 3 Jan 1 12:00 good";
    expectRefusal(parseLIST, unsafeName, goodLine, {"-rw-r--r-- 1 w w 3 Jan 1 12:00 a/b", "01-02-26 1:15AM 3 a/b"});
    expectRefusal(
        parseLIST, unreadable, goodLine,
        {"-rw-r--r-- 1 w w 3 Jan 1 12:00 a\r\r\n", "srw-r--r-- 1 w w 3 Jan 1 12:00 socket",
         "crw-r--r-- 1 w w 3 Jan 1 12:00 device", "total"});
}

TEST(Listing, DuplicateAndHiddenNamesAreDropped) {
    const Entries twice{file("a"), folder("b"), folder("a"), file("c"), folder("b")};
    Entries entries = twice;
    keepShown(entries, {file("b"), file("a"), file("a")});
    EXPECT_EQ(entries, (Entries{file("a"), folder("b")}));
    entries = twice;
    keepShown(entries, entries);
    EXPECT_EQ(entries, (Entries{file("a"), folder("b"), file("c")}));
}

TEST(HostileListing, LongLinesTakeLinearTime) {
    const std::size_t size = std::size_t{2} << 20; // with quadratic cost the test would never end
    const std::string blanks(size, ' ');
    const std::string digits(size, '7');
    std::string pairs;
    while (pairs.size() < size) pairs += "1 ";
    for (const std::string& filler : {blanks, digits, std::string(size, 'x'), pairs}) {
        for (const auto* start :
             {"", "-rw-r--r--", "-rw-r--r-- ", "-rw-r--r-- 1", "-rw-r--r-- 1 w", "-rw-r--r-- 1 w w",
              "-rw-r--r-- 1 w w 3", "-rw-r--r-- 1 w w 3 Jan 1 12", "01-02-", "01-02-2026", "01-02-2026 1",
              "01-02-2026 10:15AM ", "01-02-2026 10:15AM 3"}) {
            EXPECT_EQ(failureOf([&] { return parseLIST(start + filler + "\vx\v"); }), unreadable) << start;
        }
    }
    EXPECT_EQ(parseLIST("-rw-r--r-- 1 w w 3 Jan 1 12:00 " + blanks), Entries{file(blanks)});
    EXPECT_EQ(parseLIST("01-02-2026 10:15AM 3 " + blanks + "x"), Entries{file("x")});
    EXPECT_EQ(parseLIST(std::string(size, '\n')), Entries{});
    EXPECT_EQ(failureOf([&] { return parseMLSD("type=file" + std::string(size, ';')); }), noNames);
    EXPECT_EQ(failureOf([&] { return parseMLSD(std::string(size, ';') + " x"); }), noType);
    EXPECT_EQ(parseMLSD("type=dir;modify=" + digits + " " + digits), Entries{folder(digits)});
}

TEST(HostileListing, ManyEntriesTakeLinearTime) {
    constexpr std::size_t count = 200'000;
    std::string machine;
    std::string people;
    for (std::size_t i = 0; i < count; ++i) {
        const auto name = std::to_string(i) + "\r\n";
        machine += "type=file; " + name;
        people += "-rw-r--r-- 1 w w 3 Jan 1 12:00 " + name;
    }
    auto entries = parseMLSD(machine);
    keepShown(entries, parseLIST(people));
    EXPECT_EQ(entries.size(), count);
}

} // namespace
} // namespace zembrastel
