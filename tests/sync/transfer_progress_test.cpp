#include "model/error.h"
#include "support/fake_clock.h"
#include "support/local_site.h"
#include "sync/progress_meter.h"
#include "sync/sync_worker.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using testing::FtpServer;
using testing::LocalSite;
using Work = TransferProgress::Work;

constexpr std::uint64_t megabyte = 1'000'000;

TransferRate rateAfter(const std::vector<std::uint64_t>& bytesEachHalfSecond) {
    TransferRate rate;
    TransferRate::Time time{};
    for (const auto bytes : bytesEachHalfSecond) rate.add(time += 500ms, bytes);
    return rate;
}

std::vector<std::uint64_t> steady(std::size_t looks, std::uint64_t start, std::uint64_t each) {
    std::vector<std::uint64_t> bytes;
    for (std::size_t i = 0; i < looks; ++i) bytes.push_back(start + i * each);
    return bytes;
}

TEST(TransferRate, SaysNothingThatIsNotKnownYetAndFollowsWhatChanges) {
    EXPECT_FALSE(rateAfter({megabyte}).perSecond()) << "what the system took at once was never a rate";
    EXPECT_DOUBLE_EQ(rateAfter(steady(2, 5 * megabyte, megabyte)).perSecond().value(), 2e6);
    EXPECT_NEAR(rateAfter(steady(40, 0, megabyte)).perSecond().value(), 2e6, 1);

    EXPECT_FALSE(rateAfter(steady(6, 0, megabyte)).left(20 * megabyte)) << "watched for 2.5 seconds";
    EXPECT_EQ(rateAfter(steady(7, 0, megabyte)).left(20 * megabyte), 10s);
    EXPECT_FALSE(rateAfter(steady(7, 0, 10)).left(1000 * megabyte)) << "weeks";

    auto slower = steady(20, 0, megabyte);
    for (int i = 0; i < 6; ++i) slower.push_back(slower.back());
    EXPECT_NEAR(rateAfter(slower).perSecond().value(), 2e6 / 2.718, 1e4) << "three seconds of nothing";
    for (int i = 0; i < 100; ++i) slower.push_back(slower.back());
    EXPECT_FALSE(rateAfter(slower).left(megabyte)) << "stalled";
    EXPECT_GE(rateAfter({megabyte, 2 * megabyte, 0}).perSecond().value(), 0) << "begun anew";
}

class Meter : public ::testing::Test {
protected:
    void move(std::uint64_t bytes, std::chrono::milliseconds after) {
        clock.advance(after);
        meter.fileMoved(bytes);
    }

    testing::FakeClock clock;
    std::vector<TransferProgress> told;
    ProgressMeter meter{clock, [this](const TransferProgress& progress) { told.push_back(progress); }};
};

TEST_F(Meter, TransferIsToldOnceItHasTakenASecondAndTheNextOneBeginsAnew) {
    meter.begin(Work::uploading);
    for (const char* const path : {"first", "second"}) {
        told.clear();
        meter.fileBegins(path, 10 * megabyte);
        move(megabyte, 500ms);
        move(2 * megabyte, 499ms);
        EXPECT_TRUE(told.empty());
        move(3 * megabyte, 501ms);
        ASSERT_EQ(told.size(), 1U);
        EXPECT_EQ(told[0].file->path, path);
        EXPECT_EQ(told[0].file->bytes, 3 * megabyte);
        EXPECT_NEAR(told[0].file->rate.value(), 2e6, 1e4);
        EXPECT_FALSE(told[0].file->left);
    }
    move(11 * megabyte, 500ms);
    EXPECT_FALSE(told.back().file->size) << "the server had told a size that was too small";
    EXPECT_EQ(told.back().file->bytes, 11 * megabyte);
}

TEST_F(Meter, WalkIsToldTwiceASecondAtMostHoweverManyFilesItMeets) {
    meter.begin(Work::downloading);
    meter.folderListed(2500);
    for (int i = 0; i < 2500; ++i) {
        clock.advance(1ms);
        meter.fileDone();
    }
    ASSERT_EQ(told.size(), 4U); // at 1, 1.5, 2 and 2.5 seconds
    EXPECT_EQ(told.front().filesDone, 1000U);
    EXPECT_EQ(told.back().filesDone, 2500U);
    EXPECT_EQ(told.back().filesQueued, 2500U);
    EXPECT_EQ(told.back().folders, 1U);
}

// Real time for what is measured; sleeps take none.
class RunningClock final : public testing::FakeClock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override {
        return std::chrono::steady_clock::now();
    }
};

class WorkerProgress : public ::testing::Test {
protected:
    // Runs a worker until it has slept so many times.
    void run(const LocalSite& site, testing::FakeClock& clock, std::size_t sleeps) {
        std::stop_source stop;
        std::size_t count = 0;
        clock.onSleep = [&](std::chrono::nanoseconds) {
            if (++count == sleeps) stop.request_stop();
            return count < sleeps;
        };
        const auto take = [this](const WorkerEvent& event) {
            const auto* const uploaded = std::get_if<event::Uploaded>(&event);
            const auto* const downloaded = std::get_if<event::Downloaded>(&event);
            if (uploaded != nullptr || downloaded != nullptr) toldAtEnd.push_back(told.size());
        };
        const EventSink sink{.deliver = take, .post = take, .progress = [this](const TransferProgress& progress) {
                                 told.push_back(progress);
                             }};
        const SyncWorker worker{
            .profile = site.profile,
            .password = site.password,
            .control = std::make_shared<TransferControl>(),
            .initialBaseline = {},
            .events = sink,
            .clock = clock};
        worker.run(stop.get_token());
    }

    // What was told of a transfer of `size` bytes at `rate` bytes a second.
    void expectPlausible(const std::string& path, std::uint64_t size, double rate) const {
        ASSERT_EQ(toldAtEnd.size(), 1U);
        for (const auto& late : std::span(told).subspan(toldAtEnd.front())) EXPECT_FALSE(late.file);
        auto transfer = told;
        // On a slow machine, that folders are listed and that the file is done is told as well.
        std::erase_if(transfer, [](const auto& progress) { return !progress.file; });
        ASSERT_GE(transfer.size(), 3U) << "told while it went on";
        std::uint64_t before = 0;
        for (const auto& progress : transfer) {
            EXPECT_EQ(progress.file->path, path);
            EXPECT_EQ(progress.file->size, size);
            EXPECT_GE(progress.file->bytes, before);
            EXPECT_LE(progress.file->bytes, size);
            before = progress.file->bytes;
        }
        EXPECT_GT(transfer.back().file->bytes, transfer.front().file->bytes);
        const double measured = transfer[transfer.size() / 2].file->rate.value();
        EXPECT_GT(measured, rate / 4);
        EXPECT_LT(measured, rate * 4);
        EXPECT_EQ(transfer.front().filesQueued, 1U);
        EXPECT_EQ(transfer.front().filesDone, 0U);
    }

    std::vector<TransferProgress> told;
    std::vector<std::size_t> toldAtEnd; // of each file
    RunningClock running;
};

constexpr int slowKiB = 2000; // a second
constexpr double slowRate = slowKiB * 1024.0;

TEST_F(WorkerProgress, UploadToASlowServerIsSeenGrowing) {
    const std::size_t size = 12 * megabyte; // twice what the two ends of a connection take at once
    FtpServer server(FtpServer::Kind::vsftpd, {.rateKiB = slowKiB});
    const LocalSite site(server, {{"video", testing::randomBytes(size)}});
    run(site, running, 3);
    expectPlausible("video", size, slowRate);
    EXPECT_TRUE(told.back().file->left || told.back().file->bytes == size);
}

// Each reading of it takes 50 milliseconds.
class HastyClock final : public testing::FakeClock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override {
        return FakeClock::steadyNow() + ++looks * 50ms;
    }

private:
    mutable int looks = 0;
};

TEST_F(WorkerProgress, SmallFilesCountOnceTheyAreLive) {
    constexpr std::size_t count = 200;
    for (const bool slow : {false, true}) {
        FtpServer server(FtpServer::Kind::vsftpd);
        LocalSite site(server);
        for (std::size_t i = 0; i < count; ++i) testing::writeFile(site / ("page" + std::to_string(i)), "four");
        testing::FakeClock standing; // however long a busy machine takes
        HastyClock hasty;
        told.clear();
        toldAtEnd.clear();
        run(site, slow ? hasty : standing, 3);
        EXPECT_EQ(toldAtEnd.size(), count);
        EXPECT_EQ(told.empty(), !slow) << "over within a second";
        std::uint64_t bytes = 0;
        for (std::size_t i = 0; i < told.size(); ++i) {
            EXPECT_EQ(told[i].filesDone, static_cast<std::size_t>(std::ranges::count_if(toldAtEnd, [i](auto before) {
                          return before <= i;
                      })));
            EXPECT_EQ(told[i].filesQueued, count);
            EXPECT_EQ(told[i].bytesQueued, 4 * count);
            EXPECT_GE(told[i].bytes, std::max<std::uint64_t>(bytes, 4 * told[i].filesDone));
            EXPECT_LE(bytes = told[i].bytes, 4 * count);
            EXPECT_FALSE(told[i].file);
        }
    }
}

} // namespace
} // namespace zembrastel
