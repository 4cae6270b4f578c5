// How progress reaches the model, and what ends it.
#include "app/model_fixture.h"
#include "model/error.h"
#include "platform/files.h"
#include "support/wait_for.h"
#include "sync/progress_meter.h"

#include <atomic>
#include <latch>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Work = TransferProgress::Work;

TransferProgress fileOf(const std::string& path, std::uint64_t done, std::uint64_t queued) {
    return {.file = TransferProgress::File{.path = path, .bytes = 1}, .filesDone = done, .filesQueued = queued};
}

// A model whose worker is the test's own.
class ModelProgress : public testing::ModelFixture {
protected:
    using Watch = std::function<void(const SyncWorker&, const std::stop_token&)>;

    AppModel& startWith(Watch watch) {
        withProfile();
        model.reset();
        AppModel::Options options{
            .storeOverride = StateStore(stateFolder / "state"),
            .work = {
                .check = [](const auto&, const auto&, const auto&, const auto&) { return std::vector<RemoteChange>(); },
                .watch =
                    [watch = std::move(watch)](const SyncWorker& worker, const std::stop_token& stop) {
                        try {
                            watch(worker, stop);
                        } catch (const Cancelled&) {
                            // Stopped.
                        }
                    }},
            .clock = clock};
        options.sessionPasswords[id()] = site.password;
        model = std::make_unique<AppModel>(queue, std::move(options));
        model->start(id());
        return *model;
    }

    [[nodiscard]] const std::optional<TransferProgress>& progress() const { return model->status(id()).progress; }
};

TEST_F(ModelProgress, ModelThatIsBehindGetsOneReportInItsTurnAndTheWorkerGoesOn) {
    std::latch reported(1);
    std::latch applied(1);
    std::vector<std::string> seen;
    startWith([&](const SyncWorker& worker, const std::stop_token&) {
        worker.events.deliver(uploadingStatus("a", 2));
        for (const char* const path : {"1", "2", "3"}) worker.events.progress(fileOf(path, 0, 2));
        worker.events.post(event::Activity{.text = "after"});
        reported.count_down(); // with none of them taken
        applied.wait();
        worker.events.progress(fileOf("4", 0, 2));
        worker.events.deliver(event::Uploaded{.path = "a", .fingerprint = {}});
    });
    ASSERT_TRUE(reaches("Uploading"));
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

TEST_F(ModelProgress, NothingIsShownOfWorkThatWasStoppedOrIsOver) {
    std::latch stopped(1);
    std::latch reported(1);
    startWith([&](const SyncWorker& worker, const std::stop_token& stop) {
        worker.events.deliver(uploadingStatus("a", 1));
        worker.events.progress(fileOf("a", 0, 1));
        if (stop.stop_requested()) return;
        worker.events.deliver(queuedStatus(1));
        worker.events.deliver(uploadingStatus("a", 1));
        worker.events.progress(fileOf("a again", 0, 1));
        stopped.wait();
        worker.events.progress(fileOf("late", 0, 1));
        reported.count_down();
    });
    ASSERT_TRUE(runUntil([&] { return progress().has_value(); }));
    ASSERT_TRUE(reaches("Changes queued"));
    EXPECT_FALSE(progress());
    ASSERT_TRUE(runUntil([&] { return progress().has_value(); }));
    model->toggle(id());
    EXPECT_FALSE(progress());
    stopped.count_down();
    reported.wait();
    (void)queue.runUntil([] { return false; }, 0ms);
    EXPECT_FALSE(progress());
    model.reset(); // before what its thread uses
}

// Time passes with every look at it.
class HastyClock final : public testing::FakeClock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override {
        return FakeClock::steadyNow() + looks++ * 400ms;
    }

private:
    mutable std::atomic<int> looks = 0;
};

// Notes the greatest progress that a model came to.
class Diary final : public ModelObserver {
public:
    explicit Diary(const AppModel& observed) : model(observed) {}

    void progressChanged(const Uuid& id) override {
        const auto& progress = model.status(id).progress;
        if (progress && progress->filesDone >= most.filesDone) most = *progress;
    }

    TransferProgress most;

private:
    const AppModel& model;
};

class ServerProgress : public testing::ModelFixture {
protected:
    ~ServerProgress() override { model.reset(); } // before the clock that it looks at

    AppModel& open(Clock& used) {
        model.reset();
        AppModel::Options options{
            .storeOverride = StateStore(stateFolder / "state"), .passwordAccess = passwords, .clock = used};
        options.sessionPasswords[id()] = site.password;
        model = std::make_unique<AppModel>(queue, std::move(options));
        return *model;
    }

    void saveForDownload() {
        site.profile.needsDownload = true;
        site.profile.initialDownloadSelection = DownloadSelection::everything();
        withProfile();
    }

    HastyClock hasty;
};

TEST_F(ServerProgress, DownloadAndCheckTellHowManyFoldersAndFilesTheyHaveBeenThrough) {
    for (int i = 0; i < 12; ++i) server.put("site/folder" + std::to_string(i % 3) + "/" + std::to_string(i), "x");
    saveForDownload();
    hasty.onSleep = [](std::chrono::nanoseconds) { return false; }; // the first poll ends the test
    open(hasty);
    Diary download(*model);
    model->observe(download);
    model->start(id());
    ASSERT_TRUE(reaches("Checking server"));
    model->forget(download);
    EXPECT_EQ(download.most.work, Work::downloading);
    EXPECT_GE(download.most.filesDone, 8U);
    EXPECT_LE(download.most.filesDone, download.most.filesQueued);
    EXPECT_EQ(download.most.folders, 4U);
    Diary check(*model);
    model->observe(check);
    ASSERT_TRUE(reaches("Watching"));
    model->forget(check);
    EXPECT_EQ(check.most.work, Work::comparing);
    EXPECT_GE(check.most.filesDone, 8U);
    EXPECT_EQ(check.most.folders, 4U);
    EXPECT_FALSE(model->status(id()).progress);
}

// A server that says nothing more, or next to nothing, holds nobody who wants to stop.
TEST_F(ServerProgress, DownloadAndCheckEndAtOnceWhenTheyAreStopped) {
    using testing::FtpServer;
    for (const bool downloads : {true, false}) {
        const testing::TemporaryFolder logs;
        FtpServer slow(
            FtpServer::Kind::odd,
            {.extra = {
                 downloads ? "--rate" : "--hang", downloads ? "20000" : "LIST", "--log", (logs / "log").string()}});
        slow.put("site/video", std::string(50'000'000, 'x'));
        if (!downloads) testing::writeFile(site / "page", "x");
        const Uuid known = id();
        site.profile = testing::profileFor(slow, site.root(), slow.remoteFolder("site"));
        site.profile.id = known;
        site.profile.name = "Slow";
        site.password = slow.password();
        site.profile.needsDownload = downloads;
        site.profile.initialDownloadSelection = DownloadSelection::everything();
        withProfile();
        open(systemClock()).start(id());
        ASSERT_TRUE(reaches(downloads ? "Downloading" : "Checking server"));
        if (downloads) {
            ASSERT_TRUE(runUntil([this] {
                const auto& progress = model->status(id()).progress;
                return progress && progress->file && progress->file->bytes > 0;
            }));
        } else {
            ASSERT_TRUE(testing::eventually([&] {
                const auto commands = readFile(logs / "log").value_or("");
                return commands.find("LIST") != std::string::npos; // which will never be answered
            }));
        }
        const auto before = std::chrono::steady_clock::now();
        model->toggle(id());
        EXPECT_FALSE(model->status(id()).active);
        model.reset(); // waits for the thread
        EXPECT_LT(std::chrono::steady_clock::now() - before, 5s);
        EXPECT_TRUE(testing::leftoverPartFiles(site.root()).empty());
    }
}

} // namespace
} // namespace zembrastel
