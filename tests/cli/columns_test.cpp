#include "cli/terminal/live_line.h"

#include <gtest/gtest.h>

namespace zembrastel::cli {
namespace {

TEST(Columns, NoNameRunsOverTheLineAndNoCharacterIsTorn) {
    struct Case {
        std::string text;
        std::size_t columns;
        std::string elided; // to seven columns
    };
    for (const auto& [text, columns, elided] : std::vector<Case>{
             {"index.html", 10, "ind…tml"},
             {"seven", 5, "seven"},
             {"seven77", 7, "seven77"},
             {"grüße.html", 10, "grü…tml"},
             {"cafe\u0301/cafe\u0301", 9, "caf…afe\u0301"}, // the accent is a character of its own
             {"网站/图片.png", 13, "网…png"},               // half a character is none
             {"😀😀😀😀", 8, "😀…😀"},
             {"", 0, ""},
         }) {
        EXPECT_EQ(columnsOf(text), columns) << text;
        EXPECT_EQ(elidedInMiddle(text, 7), elided);
        EXPECT_LE(columnsOf(elidedInMiddle(text, 7)), 7U) << text;
    }
    EXPECT_EQ(elidedInMiddle("abc", 1), "…");
    EXPECT_EQ(elidedInMiddle("abc", 0), "");
}

} // namespace
} // namespace zembrastel::cli
