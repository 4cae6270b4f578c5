#include "ui/selection_summary.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace zembrastel {
namespace {

using Rules = std::map<std::string, bool, std::less<>>;

TEST(SelectionSummary, CountsWhatWasTickedAndSaysNothingThatIsNotKnown) {
    const auto summary = [](const Rules& rules, const std::optional<TickedKinds>& kinds) {
        return selectionSummary({.rules = rules}, kinds);
    };
    EXPECT_EQ(summary({}, TickedKinds{}), "Nothing selected");
    EXPECT_EQ(summary({{"a", false}}, TickedKinds{}), "Nothing selected");
    EXPECT_EQ(summary({{"", true}}, std::nullopt), "Everything selected");
    EXPECT_EQ(summary({{"", true}, {"a", false}, {"b", false}}, std::nullopt), "Everything selected, 2 exceptions");
    EXPECT_EQ(summary({{"a", true}}, std::nullopt), "1 item selected");
    EXPECT_EQ(summary({{"a", true}, {"b", true}}, std::nullopt), "2 items selected");
    EXPECT_EQ(
        summary({{"a", true}, {"a/b", false}}, TickedKinds{.folders = 1, .files = 0}),
        "1 folder selected, 1 exception");
    EXPECT_EQ(summary({{"a", true}}, TickedKinds{.folders = 3, .files = 2}), "3 folders and 2 files selected");
}

// The same beginning of a name must not make a folder of a file.
TEST(SelectionSummary, TellsFoldersFromFilesOnlyByWhatWasSynchronised) {
    const FileMap files{{"docs-old", {}}, {"docs/a.txt", {}}, {"index.html", {}}};
    Profile profile;
    EXPECT_EQ(syncContentsSummary(profile, files), "All files in the local folder");
    profile.syncSelection = DownloadSelection::everything();
    EXPECT_EQ(syncContentsSummary(profile, files), "All non-excluded files and folders");
    profile.syncSelection = DownloadSelection{};
    EXPECT_EQ(syncContentsSummary(profile, files), "Nothing selected");
    profile.syncSelection = DownloadSelection{.rules = {{"docs", true}, {"docs-old", true}, {"index.html", true}}};
    EXPECT_EQ(syncContentsSummary(profile, files), "1 folder and 2 files selected");
    profile.syncSelection->rules["index"] = true; // of which nothing was synchronised yet
    EXPECT_EQ(syncContentsSummary(profile, files), "4 items selected");
}

} // namespace
} // namespace zembrastel
