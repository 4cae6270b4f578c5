#include "model/exclusions.h"

#include <algorithm>
#include <clocale>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <locale.h>
#include <random>
#include <string>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::string_literals;

struct Case {
    std::string rules;
    std::string path;
    bool excluded;
};

void expectAll(const std::vector<Case>& cases) {
    for (const auto& [rules, path, excluded] : cases) {
        EXPECT_EQ(Exclusions(rules).match(path), excluded)
            << testing::PrintToString(path) << " by " << testing::PrintToString(rules);
    }
}

TEST(Exclusions, DefaultRulesKeepSecretsAndClutterOffTheServer) {
    const Exclusions rules;
    for (const auto* path :
         {".git/config", "src/.env", "a/.env.local", "x/node_modules/y.js", "notes.txt.swp", "memo~", "//.git//x"}) {
        EXPECT_TRUE(rules.match(path)) << path;
    }
    EXPECT_TRUE(rules.matchEntry("x/.git//"));
    EXPECT_FALSE(rules.matchEntry("//"));
    for (const auto* path : {".envrc", "src/main.c", "assets/.well-known/x", ".ds_store", "git", "swp", ""}) {
        EXPECT_FALSE(rules.match(path)) << path;
    }
}

TEST(Exclusions, OwnTemporaryFilesAndBackupsAreNeverSyncedWhateverTheRules) {
    const Exclusions rules("");
    for (const auto* path : {".zembrastel-backups/2020/a.txt", "sub/.zembrastel-1.part", "sub/.~lock", ".#draft"}) {
        EXPECT_TRUE(rules.match(path)) << path;
    }
    for (const auto* path : {"a.zembrastel-b", ".zembrastel"}) EXPECT_FALSE(rules.match(path)) << path;
}

TEST(Exclusions, EveryLineIsARuleHoweverItIsEndedOrIndented) {
    const std::string rules = "  \t a \u00A0\r\n\n \t \nb\u2028c\v#d\u0085e f";
    for (const auto* path : {"a", "b", "c", "#d", "e f"}) EXPECT_TRUE(Exclusions(rules).match(path)) << path;
    EXPECT_FALSE(Exclusions(rules).match("d"));
    EXPECT_FALSE(Exclusions(rules).match(" "));
}

TEST(Exclusions, ARuleWithASlashLeavesOtherFoldersAlone) {
    expectAll({
        {"logs/*.txt", "logs/a.txt", true},
        {"logs/*.txt", "other/logs/a.txt", false},
        {"logs/*.txt", "logs/sub/a.txt", false},
        {"logs/*.txt", "logs/*.txt/x", true},
        {"build/out", "build/out", true},
        {"build/out", "build/out/x/y", true},
        {"build/out", "build/outer", false},
        {"//build/", "build/x", true},
        {"//build/", "build", false},
        {"/", "a/b", false},
        {"/", "/a", true},
    });
}

TEST(Exclusions, NulBytesNeitherCutANameNorARule) {
    expectAll({
        {".git", ".git\0x"s, false},
        {"*.swp", "a\0.swp"s, true},
        {"[ab]", "a\0b"s, false},
        {".git\0x"s, ".git", false},
        {"a*\0"s, "ab", false},
        {"a/*\0"s, "a/b", false},
        {"a\0/b"s, "a\0/b/c"s, true},
    });
}

// Puts the process's locale back.
class ProcessLocale {
public:
    explicit ProcessLocale(const char* name) : previous(setlocale(LC_ALL, nullptr)) {
        known = setlocale(LC_ALL, name) != nullptr;
    }
    ~ProcessLocale() { setlocale(LC_ALL, previous.c_str()); }
    ProcessLocale(const ProcessLocale&) = delete;
    ProcessLocale& operator=(const ProcessLocale&) = delete;

    bool known = false;

private:
    std::string previous;
};

TEST(Exclusions, AProgramThatSetsItsLocaleDoesNotChangeWhatARuleMeans) {
    const ProcessLocale locale("C.UTF-8");
    ASSERT_TRUE(locale.known);
    auto* const before = uselocale(nullptr);
    expectAll({{"?", "é", false}, {"??", "é", true}, {"a/?", "a/é", false}, {"[!a]?x", "éx", true}});
    EXPECT_EQ(uselocale(nullptr), before);
}

// The rules as the manual words them, without any short cut.
bool plainReading(const std::vector<std::string>& rules, const std::string& path) {
    std::vector<std::string> components(1);
    for (const char byte : path) {
        if (byte == '/') {
            components.emplace_back();
        } else {
            components.back() += byte;
        }
    }
    std::erase(components, "");
    const auto matchRule = [&](const std::string& rule) {
        if (rule.find('/') == std::string::npos) {
            return std::ranges::any_of(
                components, [&](const auto& name) { return fnmatch(rule.c_str(), name.c_str(), 0) == 0; });
        }
        auto folder = rule;
        while (folder.starts_with('/')) folder.erase(0, 1);
        while (folder.ends_with('/')) folder.pop_back();
        return fnmatch(rule.c_str(), path.c_str(), FNM_PATHNAME) == 0 || path.starts_with(folder + "/");
    };
    const auto reserved = [](const std::string& name) {
        return name.starts_with(".zembrastel-") || name.starts_with(".~") || name.starts_with(".#");
    };
    return std::ranges::any_of(components, reserved) || std::ranges::any_of(rules, matchRule);
}

class RandomTexts {
public:
    explicit RandomTexts(std::uint64_t seed) : generator(seed) {}

    std::size_t below(std::size_t limit) { return generator() % limit; }

    std::string text(std::string_view alphabet, std::size_t longest) {
        std::string made(1 + below(longest), ' ');
        for (auto& byte : made) byte = alphabet[below(alphabet.size())];
        return made;
    }

    // Often a rule with its wildcards filled in, so that many pairs match.
    std::string path(const std::string& rule) {
        constexpr std::string_view alphabet = "aab.~#-*[]!?\\//";
        if (below(3) == 0) return text(alphabet, 9);
        std::string made;
        for (const char byte : rule) made += byte == '*' || byte == '?' ? text(alphabet, 2) : std::string(1, byte);
        if (below(2) == 0) made += "/" + text(alphabet, 3);
        if (below(3) == 0) made.insert(0, text(alphabet, 2) + "/");
        return made;
    }

private:
    std::mt19937_64 generator;
};

bool parentExcluded(const Exclusions& exclusions, const std::string& path) {
    for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        if (exclusions.match(path.substr(0, slash))) return true;
    }
    return false;
}

TEST(Exclusions, ShortCutsDecideLikeTheShellsMatcher) {
    constexpr std::uint64_t seed = 20240229;
    RandomTexts random(seed);
    int excluded = 0;
    int entries = 0;
    constexpr int rounds = 40000;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::string> rules;
        std::string lines;
        for (auto count = 1 + random.below(3); count > 0; --count) {
            rules.push_back(random.text("aab.**?[]\\/-!", 6));
            lines += rules.back() + "\n";
        }
        const auto path = random.path(rules.front());
        const Exclusions exclusions(lines);
        const bool expected = plainReading(rules, path);
        excluded += expected ? 1 : 0;
        ASSERT_EQ(exclusions.match(path), expected) << "seed " << seed << ", path " << path << ", rules\n" << lines;

        if (parentExcluded(exclusions, path)) continue;
        ++entries;
        ASSERT_EQ(exclusions.matchEntry(path), expected) << "seed " << seed << ", entry " << path << ", rules\n"
                                                         << lines;
    }
    // Both answers are common enough to mean something.
    EXPECT_GT(excluded, rounds / 5);
    EXPECT_LT(excluded, rounds * 4 / 5);
    EXPECT_GT(entries, rounds / 5);
}

} // namespace
} // namespace zembrastel
