#include "model/exclusions.h"

#include "platform/text.h"

#include <algorithm>
#include <clocale>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <locale.h>
#include <random>
#include <sstream>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::string_literals;

void expectAll(const Exclusions& rules, bool excluded, const std::vector<std::string>& paths) {
    for (const auto& path : paths) {
        EXPECT_EQ(rules.match(path), excluded)
            << testing::PrintToString(path) << " by " << testing::PrintToString(rules.text());
    }
}

TEST(Exclusions, DoubledSlashesHideNoClutterAndLookAlikesAreKept) {
    expectAll(Exclusions(), true, {"//.git//x"});
    expectAll(Exclusions(), false, {".gitignore", ".ds_store", "git", "swp", "a.swpp", ""});
    EXPECT_TRUE(Exclusions().matchEntry("x/.git//"));
    EXPECT_FALSE(Exclusions().matchEntry("//"));
    const Exclusions none("");
    expectAll(none, true, {"sub/.~lock", ".#draft"});
    expectAll(none, false, {"a.zembrastel-b", ".zembrastel"});
}

TEST(Exclusions, EveryLineIsARuleForItsOwnNamesAndFolders) {
    const Exclusions lines("a\r\n\nb\u2028c\v#d\u0085e f");
    expectAll(lines, true, {"a", "b", "c", "#d", "e f"});
    expectAll(lines, false, {"d"});
    expectAll(Exclusions("logs/*.txt"), true, {"logs/*.txt/x"});
}

TEST(Exclusions, NulBytesNeitherCutANameNorARule) {
    expectAll(Exclusions(".git\n[ab]"), false, {".git\0x"s, "a\0b"s});
    expectAll(Exclusions("*.swp"), true, {"a\0.swp"s});
    expectAll(Exclusions(".git\0x\na*\0\na/*\0"s), false, {".git", "ab", "a/b"});
    expectAll(Exclusions("a\0/b"s), true, {"a\0/b/c"s});
}

TEST(Exclusions, AProgramThatSetsItsLocaleDoesNotChangeWhatARuleMeans) {
    const std::string before = setlocale(LC_ALL, nullptr);
    ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
    expectAll(Exclusions("?\nab/?"), false, {"é", "ab/é"});
    expectAll(Exclusions("??\n[!a]?x"), true, {"é", "éx"});
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    setlocale(LC_ALL, before.c_str());
}

// The rules as the manual words them, without any short cut.
bool plainReading(const std::vector<std::string>& rules, const std::string& path) {
    std::vector<std::string> names;
    std::istringstream components(path);
    for (std::string name; std::getline(components, name, '/');) {
        if (!name.empty()) names.push_back(name);
    }
    const auto matchRule = [&](const std::string& rule) {
        if (rule.find('/') == std::string::npos) {
            return std::ranges::any_of(
                names, [&](const auto& name) { return fnmatch(rule.c_str(), name.c_str(), 0) == 0; });
        }
        auto folder = rule;
        while (folder.starts_with('/')) folder.erase(0, 1);
        while (folder.ends_with('/')) folder.pop_back();
        return fnmatch(rule.c_str(), path.c_str(), FNM_PATHNAME) == 0 || path.starts_with(folder + "/");
    };
    const auto reserved = [](const std::string& name) {
        return name.starts_with(".zembrastel-") || name.starts_with(".~") || name.starts_with(".#");
    };
    return std::ranges::any_of(names, reserved) || std::ranges::any_of(rules, matchRule);
}

TEST(Exclusions, ShortCutsDecideLikeTheShellsMatcher) {
    std::mt19937_64 random(20240229); // the same rules and paths in every run
    const auto text = [&](std::string_view alphabet, std::size_t longest) {
        std::string made(1 + random() % longest, ' ');
        for (auto& byte : made) byte = alphabet[random() % alphabet.size()];
        return made;
    };
    constexpr std::string_view pathBytes = "aabA.~#-*[]!?\\//";
    constexpr int rounds = 40000;
    int excluded = 0;
    int entries = 0;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::string> rules(1 + random() % 3);
        std::string lines;
        for (auto& rule : rules) lines += (rule = text("aabA.**?[]\\/-!", 6)) + "\n";
        // Often a rule with its wildcards filled in, so that many pairs match.
        std::string path;
        for (const char byte : rules.front())
            path += byte == '*' || byte == '?' ? text(pathBytes, 2) : std::string{byte};
        if (random() % 2 == 0) path += "/" + text(pathBytes, 3);
        if (random() % 3 == 0) path.insert(0, text(pathBytes, 2) + "/");
        if (random() % 3 == 0) path = text(pathBytes, 9);

        const Exclusions exclusions(lines);
        const bool expected = plainReading(rules, path);
        excluded += expected ? 1 : 0;
        ASSERT_EQ(exclusions.match(path), expected) << path << " by the rules\n" << lines;
        bool entered = true;
        for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            entered = entered && !exclusions.match(path.substr(0, slash));
        }
        if (join(splitNonEmpty(path, '/'), '/') == path) {
            const auto cause = exclusions.cause(path);
            ASSERT_EQ(cause.has_value(), expected || !entered) << path << " by the rules\n" << lines;
            if (cause && !cause->reserved) {
                ASSERT_TRUE(Exclusions(cause->rule).match(cause->path)) << cause->rule;
            }
        }
        if (!entered) continue;
        ++entries;
        ASSERT_EQ(exclusions.matchEntry(path), expected) << "entry " << path << " by the rules\n" << lines;
    }
    // Both answers are common enough to mean something.
    EXPECT_GT(excluded, rounds / 5);
    EXPECT_LT(excluded, rounds * 4 / 5);
    EXPECT_GT(entries, rounds / 5);
}

} // namespace
} // namespace zembrastel
