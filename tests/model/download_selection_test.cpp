#include "model/download_selection.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace zembrastel {
namespace {

using Mark = DownloadSelection::Mark;

TEST(DownloadSelection, WhatTheUserReadsFollowsFromTheRules) {
    EXPECT_FALSE((DownloadSelection{.rules = {{"a", false}}}.hasSelection()));
    DownloadSelection selection;
    selection.set("docs/a.txt", true);
    selection.set(selection.rules.begin()->first, true);
    EXPECT_TRUE(selection.includes("docs/a.txt") && selection.hasSelection());
    EXPECT_EQ(selection.summary(), "Custom file and folder selection");
    selection.set("", true);
    EXPECT_EQ(selection, DownloadSelection::everything());
    EXPECT_EQ(selection.summary(), "All non-excluded files and folders");
}

// The definitions, word for word, on every rule in turn.
using Rules = decltype(DownloadSelection::rules);

bool isBelow(const std::string& folder, const std::string& path) {
    return path != folder && (folder.empty() || path.starts_with(folder + "/"));
}

bool includes(const Rules& rules, const std::string& path) {
    bool deepest = false; // the rules for a path and its parents stand in the order of their depth
    for (const auto& [rule, selected] : rules) {
        if (rule == path || isBelow(rule, path)) deepest = selected;
    }
    return deepest;
}

bool anyBelow(const Rules& rules, const std::string& path, bool wanted) {
    return std::ranges::any_of(
        rules, [&](const auto& rule) { return rule.second == wanted && isBelow(path, rule.first); });
}

TEST(DownloadSelection, LookupsInOrderDecideLikeALookAtEveryRule) {
    // "-" and "." sort before "/", "0" after it: neighbours that must not be taken for the folder's contents.
    const std::vector<std::string> names{"a", "a-", "a.", "a0", "b"};
    std::mt19937_64 random(20240301); // the same paths in every run
    const auto path = [&] {
        std::string made;
        for (auto depth = random() % 4; depth > 0; --depth) {
            made += (made.empty() ? "" : "/") + names[random() % names.size()];
        }
        return made;
    };
    DownloadSelection selection;
    Rules plain;
    for (int step = 0; step < 6000; ++step) {
        if (step % 20 == 0) selection.rules = plain = {};
        const auto chosen = path();
        const bool selected = random() % 2 == 0;
        if (step % 40 < 20) {
            selection.set(chosen, selected);
            std::erase_if(plain, [&](const auto& rule) { return rule.first == chosen || isBelow(chosen, rule.first); });
            if (includes(plain, chosen) != selected) plain[chosen] = selected;
        } else { // rules from a file need not be minimal
            selection.rules[chosen] = plain[chosen] = selected;
        }
        ASSERT_EQ(selection.rules, plain) << "after " << chosen;
        for (int asked = 0; asked < 20; ++asked) {
            const auto other = path();
            const bool own = includes(plain, other);
            const auto whole = own ? Mark::all : Mark::none;
            ASSERT_EQ(selection.includes(other), own) << other;
            ASSERT_EQ(selection.mark(other), anyBelow(plain, other, !own) ? Mark::partial : whole) << other;
            ASSERT_EQ(selection.shouldVisit(other), own || anyBelow(plain, other, true)) << other;
            ASSERT_EQ(DownloadSelection::contains(chosen, other), chosen == other || isBelow(chosen, other)) << other;
        }
    }
}

} // namespace
} // namespace zembrastel
