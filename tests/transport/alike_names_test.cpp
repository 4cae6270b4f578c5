#include "transport/listing/alike_names.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

RemoteEntry remote(const std::string& name) { return {name, name.ends_with('/'), std::nullopt}; }

TEST(AlikeNames, AmbiguousCounterpartsAreNotPaired) {
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
             {{"Page", "page"}, {"page"}, {}}, // the server distinguishes them
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

TEST(AlikeNames, CollidingLocalNamesAreReportedOnce) {
    const std::string line = "Names that differ only in case or in the form of accents can be one file on the server: ";
    const FileMap before{{"a/Page", {}}, {"a/b/x", {}}};
    FileMap files = before;
    EXPECT_TRUE(alikeNameLines(files, {}).empty());
    files.set("a/page", {});
    files.set("a/B/x", {});
    const std::vector<std::string> lines{line + "a/B, a/b", line + "a/Page, a/page"};
    EXPECT_EQ(alikeNameLines(files, before), lines);
    EXPECT_TRUE(alikeNameLines(files, files).empty());
}

} // namespace
} // namespace zembrastel
