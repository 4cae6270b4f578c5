#include "model/download_selection.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

TEST(DownloadSelection, SummaryFollowsFromTheRules) {
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

} // namespace
} // namespace zembrastel
