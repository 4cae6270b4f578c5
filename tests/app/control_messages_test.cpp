#include "app/control/control_messages.h"

#include <gtest/gtest.h>
#include <tuple>

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

TEST(ControlMessages, OtherProgramsShowTheSameStatus) {
    for (const auto& facts : phaseTable) {
        for (const bool unsaved : {false, true}) {
            answer::Status told;
            told.status.enter(facts.phase, "why");
            if (unsaved) told.status.reportUnsaved("disk full");
            const auto seen = std::get<answer::Status>(decodeControlAnswer(encode(told))).status;
            const auto shown = [](const ProfileStatus& status) {
                return std::tuple(
                    status.title(), status.detail, status.active(), status.failed(), status.filesMissing());
            };
            EXPECT_EQ(shown(seen), shown(told.status)) << facts.title;
        }
    }
}

} // namespace
} // namespace zembrastel
