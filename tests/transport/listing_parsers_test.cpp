#include "transport/listing_parsers.h"

#include "platform/text.h"
#include "support/local_site.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;
using std::chrono::sys_days;
using std::chrono::year;
using testing::failureOf;
using Entries = std::vector<RemoteEntry>;
using Lines = std::vector<std::string_view>;

const std::string unsafeName = "The server returned an unsafe filename.";
const std::string unreadable = "Cannot safely read this server's directory format. "
                               "The server should support MLSD or standard Unix/Windows LIST.";
const std::string noNames = "The server returned an invalid MLSD directory listing.";
const std::string noType = "The server listing has no file type.";
const auto newYear2020 = toRemoteDate(sys_days(year(2020) / 1 / 1));

RemoteEntry file(std::string name) { return {std::move(name), false, std::nullopt}; }

RemoteEntry folder(std::string name) { return {std::move(name), true, std::nullopt}; }

// Of each of the lines, although the one before it is good.
template <class Parse>
void expectRefusal(Parse parse, const std::string& message, std::string_view good, const Lines& lines) {
    for (const auto line : lines) {
        const auto text = std::string(good).append("\r\n").append(line);
        EXPECT_EQ(failureOf([&] { return parse(text); }), message) << printable(text);
    }
}

TEST(MlsdListing, EntriesKeepNamesAndDatesWhateverTheOrderOfTheirFacts) {
    EXPECT_EQ(
        parseMLSD("type=cdir; .\r\ntype=pdir; ..\r\n"
                  "type=dir;modify=20200101000000; nested folder\r\n"
                  "type=OS.unix=slink; a/b\r\n"
                  "Size=3;Modify=20200101000001.250;TYPE=File;UNIX.mode=0644; a;b=c \n\r\n\n"
                  ";;modify=soon;type=file;modify=20200101000000;type=dir;  two blanks first\n"
                  "xtype=dir;type=dir caf\u00E9"),
        (Entries{
            {"nested folder", true, newYear2020},
            {"a;b=c ", false, newYear2020 + 1s},
            file(" two blanks first"),
            folder("caf\u00E9")}));
}

TEST(ListedSizes, OnlyNumbersOfBytesAreTakenForSizes) {
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

TEST(MlsdListing, WhatCannotBeReadForCertainIsRefusedAsAWhole) {
    const auto good = "type=file; good";
    expectRefusal(parseMLSD, noNames, good, {"type=file;", "\r\r\n"});
    expectRefusal(parseMLSD, noType, good, {"size=3; a", " a", "type; a"});
    expectRefusal(
        parseMLSD, unsafeName, good,
        {"type=file; ..", "type=dir; .", "type=file; ", "type=file; a/b", "type=file; a\rb", "type=file; a\r\r\n",
         "type=file; a\u2028", "type=file; a\0b"sv});
}

TEST(MlsdListing, EachNameCountsOnceAndOnlyIfItIsShown) {
    const Entries twice{file("a"), folder("b"), folder("a"), file("c"), folder("b")};
    Entries entries = twice;
    keepShown(entries, {file("b"), file("a"), file("a")});
    EXPECT_EQ(entries, (Entries{file("a"), folder("b")}));
    entries = twice;
    keepShown(entries, entries);
    EXPECT_EQ(entries, (Entries{file("a"), folder("b"), file("c")}));
}

TEST(FtpDate, OnlyRealInstantsAreRead) {
    EXPECT_EQ(parseFTPDate("20240229235959.999"), toRemoteDate(sys_days(year(2024) / 2 / 29) + 23h + 59min + 59s));
    EXPECT_EQ(parseFTPDate("19691231235959"), toRemoteDate(sys_days(year(1970) / 1 / 1) - 1s));
    for (const auto* text :
         {"", "2020010100", "20201301000000", "20200001000000", "20230229000000", "20200100000000", "20200101240000",
          "20200101006000", "20200101000060", "00000101000000", "-2020010100000", "+2020010100000", " 2020010100000",
          "2020010100000 ", "2020010T000000"}) {
        EXPECT_EQ(parseFTPDate(text), std::nullopt) << text;
    }
}

TEST(ListListing, FilesAndFoldersAreReadAndLinksLeftOut) {
    EXPECT_EQ(
        parseLIST("total 12\r\n"
                  "drwxr-xr-x    2 web      www          4096 Jan 01 12:00 .\r\n"
                  "drwxr-xr-x   12 web      www          4096 Jan 01 12:00 ..\r\n"
                  "drwxr-xr-x    2 web      www          4096 Jan 01 12:00 nested folder\r\n"
                  "-rw-r--r--    1 web      www             3 Jan 01  2026 a b.txt\r\n"
                  "lrwxrwxrwx    1 web      www             3 Jan 01 12:00 bad/link -> \r\n"
                  "drwxrwsr-t+   1 0        0               0 Jan 01 12:00 caf\u00E9\n"
                  "-rwSr-xr-T@ 1 a b 99999999999999999999999 x 0 y -> .\n"
                  "-rw-r--r--. 1 web www 3 Jan 01 12:00  two blanks first \n"
                  "01-02-2026  10:15AM       <DIR>          Windows folder\r\n"
                  "01-02-26  1:15pm                    3 a b.txt\r\n"
                  "01-02-026  11:15Pm <dir> D\r\n"
                  "01-02-2026  10:15AM <DIR> .\r\n"),
        (Entries{
            folder("nested folder"), file("a b.txt"), folder("caf\u00E9"), file("-> ."), file(" two blanks first "),
            folder("Windows folder"), file("a b.txt"), folder("D")}));
}

TEST(ListListing, OneLineThatCannotBeReadForCertainRefusesAll) {
    const auto good = "-rw-r--r-- 1 w w 3 Jan 1 12:00 good";
    expectRefusal(parseLIST, unsafeName, good, {"-rw-r--r-- 1 w w 3 Jan 1 12:00 a/b", "01-02-26 1:15AM 3 a/b"});
    expectRefusal(
        parseLIST, unreadable, good,
        {"-rw-r--r-- 1 w w 3 Jan 1 12:00 a\r\r\n", "srw-r--r-- 1 w w 3 Jan 1 12:00 socket",
         "crw-r--r-- 1 w w 3 Jan 1 12:00 device", "total"});
}

TEST(HostileListing, LongLinesEndInOnePassAndOnASmallStack) {
    const std::size_t size = std::size_t{8} << 20; // were each byte looked at once for every other, no test would end
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

TEST(HostileListing, ManyEntriesAreNotComparedEachWithEach) {
    constexpr std::size_t count = 500'000;
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
