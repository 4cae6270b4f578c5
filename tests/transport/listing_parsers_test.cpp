#include "transport/listing_parsers.h"

#include "model/error.h"
#include "platform/text.h"

#include <gtest/gtest.h>
#include <random>
#include <unicode/regex.h>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using namespace std::string_view_literals;
using Entries = std::vector<RemoteEntry>;

constexpr auto unsafeName = "The server returned an unsafe filename."sv;
constexpr auto unreadable = "Cannot safely read this server's directory format. "
                            "The server should support MLSD or standard Unix/Windows LIST."sv;

RemoteDate utc(std::chrono::sys_days day, std::chrono::seconds time = 0s) { return toRemoteDate(day + time); }

constexpr std::chrono::sys_days newYear2020 = std::chrono::year(2020) / 1 / 1;

RemoteEntry file(std::string name) { return {std::move(name), false, std::nullopt}; }

RemoteEntry folder(std::string name) { return {std::move(name), true, std::nullopt}; }

template <class Parse>
std::string refusal(Parse parse, std::string_view text) {
    try {
        (void)parse(text);
    } catch (const SyncError& error) {
        return error.what();
    }
    return "nothing was refused";
}

TEST(MlsdListing, EntriesKeepNamesAndDates) {
    const auto text = "type=cdir; .\r\n"
                      "type=pdir; ..\r\n"
                      "type=dir;modify=20200101000000; nested folder\r\n"
                      "type=file;size=3; caf\u00E9.txt\r\n"
                      "type=OS.unix=slink; link\r\n";
    EXPECT_EQ(parseMLSD(text), (Entries{{"nested folder", true, utc(newYear2020)}, file("caf\u00E9.txt")}));
}

TEST(MlsdListing, FactsAreFoundInAnyCaseAndOrder) {
    const auto text = "Size=3;Modify=20200101000001.250;TYPE=File;UNIX.mode=0644; a;b=c \n"
                      "\r\n\n"
                      ";;modify=soon;type=file;modify=20200101000000;type=dir;  two blanks first\n"
                      "xtype=dir;type=dir d";
    EXPECT_EQ(
        parseMLSD(text), (Entries{{"a;b=c ", false, utc(newYear2020, 1s)}, file(" two blanks first"), folder("d")}));
}

TEST(MlsdListing, WhatCannotBeReadForCertainIsRefusedAsAWhole) {
    const auto noNames = "The server returned an invalid MLSD directory listing."sv;
    const auto noType = "The server listing has no file type."sv;
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"type=file;"sv, noNames},
        {"\r\r\n"sv, noNames},
        {"size=3; a"sv, noType},
        {" a"sv, noType},
        {"type; a"sv, noType},
        {"type=file; .."sv, unsafeName},
        {"type=dir; ."sv, unsafeName},
        {"type=file; "sv, unsafeName},
        {"type=file; a/b"sv, unsafeName},
        {"type=file; a\rb"sv, unsafeName},
        {"type=file; a\r\r\n"sv, unsafeName},
        {"type=file; a\u2028"sv, unsafeName},
        {"type=file; a\0b"sv, unsafeName},
    };
    for (const auto& [line, message] : cases) {
        const std::string text = "type=file; good\r\n" + std::string(line);
        EXPECT_EQ(refusal(parseMLSD, text), message) << printable(text);
    }
    EXPECT_EQ(parseMLSD("type=slink; a/b\ntype=cdir; /srv/www\n"), Entries{}) << "what is left out needs no safe name";
}

TEST(FtpDate, OnlyRealInstantsAreRead) {
    EXPECT_EQ(parseFTPDate("20200101000000"), utc(newYear2020));
    EXPECT_EQ(parseFTPDate("20240229235959.999"), utc(std::chrono::year(2024) / 2 / 29, 23h + 59min + 59s));
    EXPECT_EQ(parseFTPDate("19691231235959"), utc(std::chrono::year(1969) / 12 / 31, 23h + 59min + 59s));
    for (const std::string_view text :
         {""sv, "2020010100"sv, "20201301000000"sv, "20200001000000"sv, "20230229000000"sv, "20200100000000"sv,
          "20200101240000"sv, "20200101006000"sv, "20200101000060"sv, "00000101000000"sv, "-2020010100000"sv,
          "+2020010100000"sv, " 2020010100000"sv, "2020010100000 "sv, "2020010T000000"sv}) {
        EXPECT_EQ(parseFTPDate(text), std::nullopt) << text;
    }
}

TEST(UnixListing, FilesAndFoldersAreReadAndLinksLeftOut) {
    const auto text = "total 12\r\n"
                      "drwxr-xr-x    2 web      www          4096 Jan 01 12:00 .\r\n"
                      "drwxr-xr-x   12 web      www          4096 Jan 01 12:00 ..\r\n"
                      "drwxr-xr-x    2 web      www          4096 Jan 01 12:00 nested folder\r\n"
                      "-rw-r--r--    1 web      www             3 Jan 01  2026 a b.txt\r\n"
                      "lrwxrwxrwx    1 web      www             3 Jan 01 12:00 link -> dst\r\n"
                      "lrwxrwxrwx    1 web      www             3 Jan 01 12:00 bad/link -> \r\n"
                      "drwxrwsr-t+   1 0        0               0 Jan 01 12:00 caf\u00E9\n"
                      "-rwSr-xr-T@ 1 a b 99999999999999999999999 x 0 y -> .\n"
                      "-rw-r--r--. 1 web www 3 Jan 01 12:00  two blanks first \n";
    const Entries expected{
        folder("nested folder"), file("a b.txt"), folder("caf\u00E9"), file("-> ."), file(" two blanks first ")};
    EXPECT_EQ(parseLIST(text), expected);
}

TEST(WindowsListing, FilesAndFoldersAreReadInAnyCase) {
    const auto text = "01-02-2026  10:15AM       <DIR>          nested folder\r\n"
                      "01-02-26  1:15pm                    3 a b.txt\r\n"
                      "01-02-026  11:15Pm <dir> D\r\n"
                      "01-02-2026  10:15AM <DIR> .\r\n";
    EXPECT_EQ(parseLIST(text), (Entries{folder("nested folder"), file("a b.txt"), folder("D")}));
}

TEST(ListListing, OneLineThatCannotBeReadForCertainRefusesAll) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00 a/b"sv, unsafeName},
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00 a\0"sv, unsafeName},
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00 "sv, unsafeName},
        {"01-02-2026 10:15AM 3 a/b"sv, unsafeName},
        {"01-02-2026 10:15AM <DIR>    "sv, unsafeName},
        // A line break may be a column's white space, but in a name it leaves no certain end of the name.
        {"-rw-r--r--\v1 web www 3 Jan 01 12:00\v"sv, unsafeName},
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00 a\rb"sv, unreadable},
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00 a\r\r\n"sv, unreadable},
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00 a\u2028"sv, unreadable},
        {"lrwxrwxrwx 1 web www 3 Jan 01 12:00 a\vb"sv, unreadable},
        {"01-02-2026 10:15AM 3 a\u0085"sv, unreadable},
        {"-rw-r--r-- 1 web www 3 Jan 01 12:00"sv, unreadable},
        {"srw-r--r-- 1 web www 3 Jan 01 12:00 socket"sv, unreadable},
        {"crw-r--r-- 1 web www 1, 3 Jan 01 12:00 null"sv, unreadable},
        {"-rw-r--r-- 1 web 3 Jan 01 12:00 no-group"sv, unreadable},
        {"-rw-r--r-x+@ 1 web www 3 Jan 01 12:00 a"sv, unreadable},
        {" -rw-r--r-- 1 web www 3 Jan 01 12:00 a"sv, unreadable},
        {"01-02-2026 10:15AM <DIR>"sv, unreadable},
        {"01-02-2026 10:15 <DIR> a"sv, unreadable},
        {"01-02-20261 10:15AM <DIR> a"sv, unreadable},
        {"2026-01-02 10:15AM <DIR> a"sv, unreadable},
        {"total"sv, unreadable},
    };
    for (const auto& [line, message] : cases) {
        const std::string text = "-rw-r--r-- 1 web www 3 Jan 01 12:00 good\r\n" + std::string(line);
        EXPECT_EQ(refusal(parseLIST, text), message) << printable(text);
    }
}

// The two forms as their regular expressions, matched by a general engine: slow, and the definition.
class ReferenceForms {
public:
    // What parseLIST makes of this one line: a name ("" for a line that is left out) or the refusal.
    std::string outcome(std::string_view line) {
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty() || line.starts_with("total ")) return "";
        const auto text = icu::UnicodeString::fromUTF8({line.data(), static_cast<std::int32_t>(line.size())});
        if (const auto name = match(*unixForm, text)) return group(*unixForm, 1) == "l" ? "" : safe(*name);
        if (const auto name = match(*windowsForm, text)) return safe(*name);
        return std::string(unreadable);
    }

private:
    using Matcher = std::unique_ptr<icu::RegexMatcher>;

    UErrorCode status = U_ZERO_ERROR;
    Matcher unixForm = std::make_unique<icu::RegexMatcher>(
        uR"(^([d\-l])[rwxstST\-]{9}[+@.]?\s+\d+\s+\S+\s+\S+\s+\d+\s+\S+\s+\d+\s+\S+\s(.*)$)", 0, status);
    Matcher windowsForm = std::make_unique<icu::RegexMatcher>(
        uR"(^\d{2}-\d{2}-\d{2,4}\s+\d{1,2}:\d{2}(?:AM|PM)\s+(<DIR>|\d+)\s+(.*)$)", UREGEX_CASE_INSENSITIVE, status);

    std::string group(icu::RegexMatcher& form, int number) {
        std::string text;
        return form.group(number, status).toUTF8String(text);
    }

    std::optional<std::string> match(icu::RegexMatcher& form, const icu::UnicodeString& text) {
        form.reset(text);
        if (form.matches(status) == 0) return std::nullopt;
        return group(form, 2);
    }

    static std::string safe(const std::string& name) {
        if (name == "." || name == "..") return "";
        const bool bad = name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos;
        return bad ? std::string(unsafeName) : name;
    }
};

TEST(ListListing, TokenizerAgreesWithTheRegularExpressionsOnOddLines) {
    const std::vector<std::string> models[] = {
        {"-", "rw-r--r--", " ", "1", " ", "web", " ", "www", " ", "3", " ", "Jan", " ", "01", " ", "12:00", " ", "a b"},
        {"d", "rwxrwxrwx", "+",   " ", "10", "  ", "web",  " ", "www", "\t",
         "3", " ",         "Jan", " ", "1",  " ",  "2026", " ", ".",   "x"},
        {"01", "-", "02", "-", "20", "26", "  ", "1", "0", ":", "15", "AM", " ", "<DIR>", "   ", "a b"},
        {"01", "-", "02", "-", "26", " ", "1", ":", "15", "p", "m", " ", "300", " ", "caf\u00E9"},
    };
    const std::string_view odd[] = {
        " ",  "  ", "\t",      "\v",     "\f",         "\r", "\u0085", "\u00A0", "\u2028", "\u3000", "\u200B",
        "1",  "12", "\u0663",  "\uFF11", "d",          "l",  "-",      "+",      "@",      ".",      ":",
        "am", "PM", "P\u1E40", "<dir>",  "<D\u0130R>", "x",  "\u00E9", "/",      "\0"sv,   "total ", ""};
    ReferenceForms reference;
    std::mt19937 random(20260102); // the same lines in every run
    const auto below = [&random](std::size_t bound) { return random() % bound; };
    std::size_t read = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::vector<std::string> pieces = models[below(std::size(models))];
        for (std::size_t changes = below(4); changes != 0; --changes) {
            const auto at = pieces.begin() + static_cast<std::ptrdiff_t>(below(pieces.size()));
            const std::string_view piece = odd[below(std::size(odd))];
            if (below(2) == 0)
                *at = piece;
            else
                pieces.emplace(at, piece);
        }
        std::string line;
        for (const std::string& piece : pieces) line += piece;
        std::string outcome;
        try {
            const Entries entries = parseLIST(line);
            if (!entries.empty()) outcome = entries.front().name;
            read += entries.size();
        } catch (const SyncError& error) {
            outcome = error.what();
        }
        ASSERT_EQ(outcome, reference.outcome(line)) << printable(line);
    }
    EXPECT_GT(read, 5'000U) << "too few lines were readable to prove anything";
}

TEST(HostileListing, LongLinesEndInOnePassAndOnASmallStack) {
    const std::size_t size = std::size_t{8} << 20; // were each byte looked at once for every other, no test would end
    const std::string blanks(size, ' ');
    const std::string digits(size, '7');
    const std::string letters(size, 'x');
    std::string pairs;
    while (pairs.size() < size) pairs += "1 ";
    for (const std::string& filler : {blanks, digits, letters, pairs}) {
        for (const char* start :
             {"", "-rw-r--r--", "-rw-r--r-- ", "-rw-r--r-- 1", "-rw-r--r-- 1 w", "-rw-r--r-- 1 w w",
              "-rw-r--r-- 1 w w 3", "-rw-r--r-- 1 w w 3 Jan 1 12", "01-02-", "01-02-2026", "01-02-2026 1",
              "01-02-2026 10:15AM ", "01-02-2026 10:15AM 3"}) {
            EXPECT_EQ(refusal(parseLIST, start + filler + "\vx\v"), unreadable) << start;
        }
    }
    EXPECT_EQ(parseLIST("-rw-r--r-- 1 w w 3 Jan 1 12:00 " + blanks), Entries{file(blanks)});
    EXPECT_EQ(parseLIST("01-02-2026 10:15AM 3 " + blanks + "x"), Entries{file("x")});
    EXPECT_EQ(
        refusal(parseMLSD, "type=file" + std::string(size, ';')),
        "The server returned an invalid MLSD directory listing.");
    EXPECT_EQ(refusal(parseMLSD, std::string(size, ';') + " x"), "The server listing has no file type.");
    EXPECT_EQ(parseMLSD("type=file;modify=" + digits + " x"), Entries{file("x")});
    EXPECT_EQ(parseLIST(std::string(size, '\n')), Entries{});
}

TEST(HostileListing, VeryLongNameIsKeptWhole) {
    const std::string name(60'000, 'n');
    EXPECT_EQ(parseLIST("-rw-r--r-- 1 w w 3 Jan 1 12:00 " + name + "\r\n"), Entries{file(name)});
    EXPECT_EQ(parseMLSD("type=dir; " + name + "\r\n"), Entries{folder(name)});
}

} // namespace
} // namespace zembrastel
