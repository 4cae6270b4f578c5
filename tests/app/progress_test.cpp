// How progress reaches the model, and what ends it.
#include "app/model_fixture.h"
#include "model/error.h"
#include "support/work_off.h"

#include <latch>
#include <vector>

namespace zembrastel {
namespace {

TransferProgress fileOf(const std::string& path, std::uint64_t done, std::uint64_t queued) {
    return {.file = TransferProgress::File{.path = path, .bytes = 1}, .filesDone = done, .filesQueued = queued};
}

// A model whose worker is the test's own.
class ModelProgress : public testing::ModelFixture {
protected:
    void startWith(std::function<void(const SyncWorker&)> watch) {
        withProfile();
        JobWork work{
            .check = [](const auto&...) { return ServerCheck(); },
            .watch =
                [watch = std::move(watch)](const SyncWorker& worker, const std::stop_token&) {
                    try {
                        watch(worker);
                    } catch (const Cancelled&) {
                        // Stopped.
                    }
                }};
        restart({.work = std::move(work), .clock = clock}).start(id());
    }

    [[nodiscard]] const std::optional<TransferProgress>& progress() const { return status().progress; }
};

TEST_F(ModelProgress, SlowModelGetsOneReportAndDelaysNoWorker) {
    std::latch reported(1);
    std::latch applied(1);
    std::vector<std::string> seen;
    startWith([&](const SyncWorker& worker) {
        worker.events.deliver(uploadingStatus("a", 2));
        for (const char* const path : {"1", "2", "3"}) worker.events.progress(fileOf(path, 0, 2));
        worker.events.post(event::Activity{.text = "after"});
        reported.count_down(); // with none of them taken
        applied.wait();
        worker.events.progress(fileOf("4", 0, 2));
        worker.events.deliver(event::Uploaded{.path = "a", .fingerprint = {}});
    });
    ASSERT_TRUE(reaches(Phase::uploading));
    reported.wait();
    EXPECT_FALSE(progress());
    ASSERT_TRUE(runUntil([&] {
        if (progress()) seen.push_back(progress()->file->path);
        return logged("after") == 1;
    }));
    EXPECT_EQ(seen.front(), "1");
    EXPECT_EQ(seen.back(), "1") << "what came while it waited was dropped";
    applied.count_down();
    ASSERT_TRUE(uploads(1));
    EXPECT_FALSE(progress()->file) << "the file that was told of is through";
    EXPECT_EQ(progress()->filesDone, 1U);
    model.reset(); // before what its thread uses
}

TEST_F(ModelProgress, StoppedWorkShowsNoProgress) {
    std::latch stopped(1);
    std::latch reported(1);
    startWith([&](const SyncWorker& worker) {
        worker.events.deliver(uploadingStatus("a", 1));
        worker.events.progress(fileOf("a", 0, 1));
        worker.events.deliver(queuedStatus(1));
        worker.events.deliver(uploadingStatus("a", 1));
        worker.events.progress(fileOf("a again", 0, 1));
        stopped.wait();
        worker.events.progress(fileOf("late", 0, 1));
        reported.count_down();
    });
    ASSERT_TRUE(runUntil([&] { return progress().has_value(); }));
    ASSERT_TRUE(reaches(Phase::queued));
    EXPECT_FALSE(progress());
    ASSERT_TRUE(runUntil([&] { return progress().has_value(); }));
    model->toggle(id());
    EXPECT_FALSE(progress());
    stopped.count_down();
    reported.wait();
    ASSERT_TRUE(testing::workOff(queue));
    EXPECT_FALSE(progress());
    model.reset(); // before what its thread uses
}

} // namespace
} // namespace zembrastel
