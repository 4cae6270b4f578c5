#include "app/control/control_messages.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

TEST(ControlMessages, ProgressArrivesWhole) {
    const TransferProgress progress{
        .work = TransferProgress::Work::downloading,
        .file = TransferProgress::File{.path = "a", .bytes = 1, .size = 2, .rate = 0.1, .left = std::chrono::hours(1)},
        .filesDone = 3,
        .filesQueued = 4,
        .folders = 5,
        .bytes = 6,
        .bytesQueued = UINT64_MAX};
    answer::Status told;
    told.status.progress = progress;
    EXPECT_EQ(std::get<answer::Status>(decodeControlAnswer(encode(told))).status.progress, progress);
}

} // namespace
} // namespace zembrastel
