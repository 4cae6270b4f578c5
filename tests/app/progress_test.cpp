// How progress reaches the model, and what ends it.
#include "app/model_fixture.h"
#include "model/error.h"
#include "platform/files.h"
#include "support/wait_for.h"
#include "support/work_off.h"
#include "transport/transfer_observer.h"

#include <atomic>
#include <latch>
#include <set>
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

    [[nodiscard]] const std::optional<TransferProgress>& progress() const { return model->status(id()).progress; }
};

TEST_F(ModelProgress, ModelThatIsBehindGetsOneReportInItsTurnAndTheWorkerGoesOn) {
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
    ASSERT_TRUE(reaches("Changes queued"));
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

// Time passes with every look at it.
class HastyClock final : public testing::FakeClock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override {
        return FakeClock::steadyNow() + looks++ * 400ms;
    }

private:
    mutable std::atomic<int> looks = 0;
};

// Counts all that it is told. A model that is behind leaves out some of it.
class Counts final : public TransferObserver {
public:
    void folderListed(std::uint64_t files) override {
        ++folders;
        found += files;
    }
    void fileDone() override { ++done; }
    void fileBegins(const std::string&, std::optional<std::uint64_t>) override {}
    void fileMoved(std::uint64_t) override {}

    std::uint64_t folders = 0;
    std::uint64_t found = 0;
    std::uint64_t done = 0;
};

// The kinds of work of which a model shows progress through folders.
class Diary final : public ModelObserver {
public:
    explicit Diary(const AppModel& observed) : model(observed) {}

    void progressChanged(const Uuid& id) override {
        const auto& progress = model.status(id).progress;
        if (progress && progress->folders > 0) seen.insert(progress->work);
    }

    std::set<Work> seen;

private:
    const AppModel& model;
};

class ServerProgress : public testing::ModelFixture {
protected:
    ~ServerProgress() override { model.reset(); } // before the clock that it looks at

    HastyClock hasty;
};

TEST_F(ServerProgress, DownloadAndCheckTellHowManyFoldersAndFilesTheyHaveBeenThrough) {
    for (int i = 0; i < 12; ++i) server.put("site/folder" + std::to_string(i % 3) + "/" + std::to_string(i), "x");
    site.profile.needsDownload = true;
    site.profile.initialDownloadSelection = DownloadSelection::everything();
    withProfile();
    hasty.onSleep = [](std::chrono::nanoseconds) { return false; }; // the first poll ends the test
    restart({.clock = hasty});
    Diary diary(*model);
    model->observe(diary);
    model->start(id());
    ASSERT_TRUE(reaches("Checking server"));
    EXPECT_EQ(diary.seen, (std::set{Work::downloading}));
    ASSERT_TRUE(reaches("Watching"));
    EXPECT_EQ(diary.seen, (std::set{Work::downloading, Work::comparing}));
    EXPECT_FALSE(model->status(id()).progress);
    model.reset(); // before the diary

    for (const bool downloads : {true, false}) {
        Counts counts;
        auto transport = site.transport();
        transport.observer = &counts;
        const auto ignore = [](const auto&...) {};
        if (downloads) {
            transport.downloadTree("", 0, ignore, ignore);
            EXPECT_EQ(counts.found, 12U);
        } else {
            (void)transport.newerRemoteFiles({}, ignore);
        }
        EXPECT_EQ(counts.folders, 4U) << downloads;
        EXPECT_EQ(counts.done, 12U) << downloads;
    }
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
        slow.put("site/video", std::string(5'000'000, 'x'));
        if (!downloads) testing::writeFile(site / "page", "x");
        const Uuid known = id();
        site.profile = testing::profileFor(slow, site.root(), slow.remoteFolder("site"));
        site.profile.id = known;
        site.profile.name = "Slow";
        site.password = slow.password();
        site.profile.needsDownload = downloads;
        site.profile.initialDownloadSelection = DownloadSelection::everything();
        withProfile();
        restart({}).start(id()); // in real time
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
        model.reset();                                             // waits for the thread
        EXPECT_LT(std::chrono::steady_clock::now() - before, 20s); // curl would wait for minutes
        EXPECT_TRUE(testing::leftoverPartFiles(site.root()).empty());
    }
}

} // namespace
} // namespace zembrastel
