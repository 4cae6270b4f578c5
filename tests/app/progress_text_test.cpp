#include "app/progress_text.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Work = TransferProgress::Work;
using File = TransferProgress::File;

TEST(ProgressText, ShowsOnlyWhatIsKnown) {
    struct Case {
        TransferProgress progress;
        std::string text;
        std::string brief;
    };
    const auto alone = [](File file) { return TransferProgress{.file = std::move(file), .filesQueued = 1}; };
    for (const auto& [progress, text, brief] : std::vector<Case>{
             {{.file = File{.path = "a", .bytes = 12'400'000, .size = 80'000'000, .rate = 3'140'000, .left = 18s},
               .filesDone = 3,
               .filesQueued = 17},
              "12.4 of 80 MB, 3.1 MB/s, about 20 seconds left — 3 of 17 files done",
              "12.4 of 80 MB, 3 of 17 files"},
             {alone({.path = "a", .bytes = 80'000, .size = 1'250'000'000, .rate = 85'400, .left = 5h}),
              "0.0 of 1.2 GB, 85 kB/s, about 5 hours left", "0.0 of 1.2 GB"},
             {alone({.path = "a", .bytes = 700, .size = 45'600, .rate = 300.0, .left = 151s}),
              "1 of 46 kB, less than 1 kB/s, about 3 minutes left", "1 of 46 kB"},
             {alone({.path = "a", .bytes = 123'400'000, .size = 345'600'000, .rate = 2e7, .left = 3s}),
              "123 of 346 MB, 20.0 MB/s, a few seconds left", "123 of 346 MB"},
             {alone({.path = "a", .bytes = 8'000'000}), "8.0 MB", "8.0 MB"},
             {alone({.path = "a", .bytes = 80'000'000, .size = 80'000'000, .rate = 3e6, .left = 0s}),
              "80.0 MB sent, waiting for the server", "80.0 of 80 MB"},
             {alone({.path = "a", .bytes = 1, .size = 9'000'000, .rate = 0.1, .left = 58s}),
              "0.0 of 9 MB, about 1 minute left", "0.0 of 9 MB"},
             {{.filesDone = 4, .filesQueued = 17}, "4 of 17 files done", "4 of 17 files"},
             {{.filesDone = 12, .filesQueued = 640, .bytes = 3'140'000, .bytesQueued = 45'000'000, .rate = 310'000.0},
              "12 of 640 files done, 3.1 of 45 MB sent, 310 kB/s",
              "12 of 640 files"},
             {{.work = Work::downloading,
             .file = File{.path = "a", .bytes = 12'400'000, .size = 80'000'000},
             .filesDone = 312,
             .filesQueued = 360,
             .folders = 14},
              "12.4 of 80 MB — 312 of 360 files found so far, in 14 folders",
              "12.4 of 80 MB, 312 of 360 files"},
             {{.work = Work::comparing, .filesDone = 1, .folders = 1},
              "Compared 1 file in 1 folder so far",
              "1 file, 1 folder"},
         }) {
        EXPECT_EQ(progressText(progress), text);
        EXPECT_EQ(shortProgressText(progress), brief);
    }
    EXPECT_DOUBLE_EQ(fileFraction({.file = File{.path = "a", .bytes = 20, .size = 80}}).value(), 0.25);
    EXPECT_FALSE(fileFraction({.file = File{.path = "a", .bytes = 0, .size = 0}}));
}

} // namespace
} // namespace zembrastel
