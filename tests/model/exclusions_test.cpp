#include "model/exclusions.h"

#include <clocale>
#include <gtest/gtest.h>
#include <locale.h>
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

TEST(Exclusions, DoubledSlashesDoNotDefeatRules) {
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

TEST(Exclusions, NulBytesCutNeitherNamesNorRules) {
    expectAll(Exclusions(".git\n[ab]"), false, {".git\0x"s, "a\0b"s});
    expectAll(Exclusions("*.swp"), true, {"a\0.swp"s});
    expectAll(Exclusions(".git\0x\na*\0\na/*\0"s), false, {".git", "ab", "a/b"});
    expectAll(Exclusions("a\0/b"s), true, {"a\0/b/c"s});
}

TEST(Exclusions, LocaleDoesNotChangeRules) {
    const std::string before = setlocale(LC_ALL, nullptr);
    ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
    expectAll(Exclusions("?\nab/?"), false, {"é", "ab/é"});
    expectAll(Exclusions("??\n[!a]?x"), true, {"é", "éx"});
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    setlocale(LC_ALL, before.c_str());
}

} // namespace
} // namespace zembrastel
