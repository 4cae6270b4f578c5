#include "transport/listing/alike_names.h"

#include "transport/listing/folder_loop.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

RemoteEntry remote(const std::string& name) { return {name, name.ends_with('/'), std::nullopt}; }

TEST(AlikeNames, OnlyAnUnmistakableCounterpartIsFound) {
    struct Case {
        std::vector<std::string> server;
        std::vector<std::string> local;
        std::vector<AlikeItems> alike;
    };
    const std::string composed = "\u00C9t\u00E9";
    const std::string decomposed = "e\u0301te\u0301";
    for (const auto& [server, local, alike] : std::vector<Case>{
             {{"x", "Page"}, {"page", "y"}, {{1, "page"}}},
             {{composed}, {decomposed}, {{0, decomposed}}},
             {{"STRASSE"}, {"stra\u00DFe"}, {{0, "stra\u00DFe"}}},
             {{"Page", "page"}, {"page"}, {}}, // the server tells them apart
             {{"Page", "PAGE"}, {"page"}, {}},
             {{"Page"}, {"page", "PAGE"}, {}},
             {{"Page"}, {"Page", "page"}, {}},
             {{"Page/"}, {"page"}, {}},
             {{"Page/"}, {"page/"}, {{0, "page/"}}},
         }) {
        std::vector<RemoteEntry> entries;
        for (const auto& name : server) entries.push_back(remote(name));
        std::vector<LocalItem> items;
        for (const auto& name : local) items.push_back({name, name.ends_with('/')});
        EXPECT_EQ(alikeItems(entries, items), alike) << ::testing::PrintToString(server);
    }
}

TEST(AlikeNames, LocalNamesThatCanMeetOnTheServerAreToldOnce) {
    const std::string told = "Names that differ only in case or in the form of accents can be one file on the server: ";
    const FileMap before{{"a/Page", {}}, {"a/b/x", {}}};
    FileMap files = before;
    EXPECT_TRUE(alikeNameLines(files, {}).empty());
    files.set("a/page", {});
    files.set("a/B/x", {});
    const std::vector<std::string> lines{told + "a/B, a/b", told + "a/Page, a/page"};
    EXPECT_EQ(alikeNameLines(files, before), lines);
    EXPECT_TRUE(alikeNameLines(files, files).empty());
}

TEST(FolderLoop, OnlyAWayThatNeverEndsIsALoop) {
    EXPECT_EQ(repeatedFar("a", "a/b").size(), std::string("a/b").size() + 32 * 2);
    EXPECT_EQ(repeatedFar("", "sub/up").size(), std::string("sub/up").size() + 16 * 7);
    const ListedFolder top{.path = "", .entries = {remote("a"), {"page", false, std::nullopt}}};
    const ListedFolder copy{.path = "a", .entries = top.entries};
    const auto ends = [](const std::string&) { return std::nullopt; };
    const auto goesOn = [&top](const std::string&) { return std::optional(top.entries); };
    const auto changes = [](const std::string&) { return std::optional(std::vector{remote("a")}); };
    const auto unasked = [](const std::string& path) -> std::optional<std::vector<RemoteEntry>> {
        ADD_FAILURE() << path;
        return std::nullopt;
    };
    const std::vector above{&top};
    EXPECT_TRUE(leadsBack(copy, above, goesOn));
    EXPECT_FALSE(leadsBack(copy, above, ends));
    EXPECT_FALSE(leadsBack(copy, above, changes));
    auto larger = copy;
    larger.entries.back().size = 1;
    EXPECT_FALSE(leadsBack(larger, above, unasked));
    const ListedFolder empty{.path = "", .entries = {}};
    EXPECT_FALSE(leadsBack({.path = "a", .entries = {}}, std::vector{&empty}, unasked));
}

} // namespace
} // namespace zembrastel
