#include "model/download_selection.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace zembrastel {
namespace {

using Mark = DownloadSelection::Mark;

TEST(DownloadSelection, OnlyWhatWasChosenIsDownloadedAndOnlyItsFoldersAreEntered) {
    const DownloadSelection selection{
        .rules = {{"docs", true}, {"docs/private", false}, {"docs/private/keep.txt", true}, {"a/b/c.txt", true}}};
    for (const auto* path : {"docs", "docs/a.txt", "docs/public/x", "docs/private/keep.txt"}) {
        EXPECT_TRUE(selection.includes(path)) << path;
    }
    for (const auto* path : {"docs2/a.txt", "doc", "docs/private/x", "", "a"}) {
        EXPECT_FALSE(selection.includes(path)) << path;
    }
    for (const auto* folder : {"", "a", "a/b", "docs/private"}) EXPECT_TRUE(selection.shouldVisit(folder)) << folder;
    for (const auto* folder : {"a/x", "z", "a/bb", "docs2"}) EXPECT_FALSE(selection.shouldVisit(folder)) << folder;
    EXPECT_FALSE(DownloadSelection{}.shouldVisit(""));
    EXPECT_FALSE((DownloadSelection{.rules = {{"a", false}}}.hasSelection()));
}

TEST(DownloadSelection, UntickingAFolderForgetsTheChoicesMadeInIt) {
    DownloadSelection selection;
    selection.set("docs/a.txt", true);
    selection.set("docs/b.txt", true);
    EXPECT_EQ(selection.mark("docs"), Mark::partial);
    selection.set(selection.rules.begin()->first, true);
    EXPECT_TRUE(selection.includes("docs/a.txt"));
    selection.set("docs", false);
    EXPECT_EQ(selection, DownloadSelection{});
    selection.set("docs/a.txt", true);
    selection.set("", true);
    EXPECT_EQ(selection, DownloadSelection::everything());
    EXPECT_EQ(selection.summary(), "All non-excluded files and folders");
    selection.set("docs/a.txt", true);
    EXPECT_EQ(selection, DownloadSelection::everything());
}

// The definitions, word for word, on every rule in turn.
struct PlainReading {
    std::map<std::string, bool, std::less<>> rules;

    static bool isBelow(const std::string& folder, const std::string& path) {
        return path != folder && (folder.empty() || path.starts_with(folder + "/"));
    }

    [[nodiscard]] bool includes(const std::string& path) const {
        std::size_t longest = 0;
        bool value = false;
        for (const auto& [rule, selected] : rules) {
            if ((rule == path || isBelow(rule, path)) && rule.size() >= longest) {
                longest = rule.size();
                value = selected;
            }
        }
        return value;
    }

    [[nodiscard]] bool anyBelow(const std::string& path, bool wanted) const {
        return std::ranges::any_of(
            rules, [&](const auto& rule) { return rule.second == wanted && isBelow(path, rule.first); });
    }

    [[nodiscard]] Mark mark(const std::string& path) const {
        const bool own = includes(path);
        if (anyBelow(path, !own)) return Mark::partial;
        return own ? Mark::all : Mark::none;
    }

    void set(const std::string& path, bool selected) {
        std::erase_if(rules, [&](const auto& rule) { return rule.first == path || isBelow(path, rule.first); });
        if (includes(path) != selected) rules[path] = selected;
    }
};

TEST(DownloadSelection, LookupsInOrderDecideLikeALookAtEveryRule) {
    // "-" and "." sort before "/", "0" after it: neighbours that must not be taken for the folder's contents.
    const std::vector<std::string> names{"a", "a-", "a.", "a0", "b"};
    constexpr std::uint64_t seed = 20240301;
    std::mt19937_64 random(seed);
    const auto path = [&] {
        std::string made;
        for (auto depth = random() % 4; depth > 0; --depth) {
            made += (made.empty() ? "" : "/") + names[random() % names.size()];
        }
        return made;
    };
    for (int round = 0; round < 300; ++round) {
        DownloadSelection selection;
        PlainReading plain;
        for (int step = 0; step < 20; ++step) {
            const auto chosen = path();
            const bool selected = random() % 2 == 0;
            if (round % 2 == 0) {
                selection.set(chosen, selected);
                plain.set(chosen, selected);
            } else { // rules from a file need not be minimal
                selection.rules[chosen] = plain.rules[chosen] = selected;
            }
            ASSERT_EQ(selection.rules, plain.rules) << "seed " << seed << ", after " << chosen;
            for (int asked = 0; asked < 20; ++asked) {
                const auto other = path();
                ASSERT_EQ(selection.includes(other), plain.includes(other)) << "seed " << seed << ", path " << other;
                ASSERT_EQ(selection.mark(other), plain.mark(other)) << "seed " << seed << ", path " << other;
                ASSERT_EQ(selection.shouldVisit(other), plain.includes(other) || plain.anyBelow(other, true))
                    << "seed " << seed << ", path " << other;
                ASSERT_EQ(
                    DownloadSelection::contains(chosen, other),
                    chosen == other || PlainReading::isBelow(chosen, other));
            }
        }
    }
}

} // namespace
} // namespace zembrastel
