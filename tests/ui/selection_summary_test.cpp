#include "ui/bridge/selection_summary.h"

#include <gtest/gtest.h>

namespace zembrastel::ui {
namespace {

// A file whose name starts with a folder's name stays a file.
TEST(SelectionSummary, FileIsNotCountedAsAFolder) {
    const FileMap files{{"docs-old", {}}, {"docs/a.txt", {}}, {"index.html", {}}};
    Profile profile;
    EXPECT_EQ(syncContentsSummary(profile, files), "All files in the local folder");
    profile.syncSelection = DownloadSelection::everything();
    EXPECT_EQ(syncContentsSummary(profile, files), "All files in the local folder");
    profile.syncSelection = DownloadSelection{};
    EXPECT_EQ(syncContentsSummary(profile, files), "Nothing selected");
    profile.syncSelection = DownloadSelection{.rules = {{"docs", true}, {"docs-old", true}, {"index.html", true}}};
    EXPECT_EQ(syncContentsSummary(profile, files), "1 folder and 2 files selected");
    profile.syncSelection->rules["index"] = true; // not synchronised yet, so its kind is unknown
    EXPECT_EQ(syncContentsSummary(profile, files), "4 items selected");
}

} // namespace
} // namespace zembrastel::ui
