#include "support/fake_clock.h"
#include "sync/progress_meter.h"

#include <gtest/gtest.h>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Work = TransferProgress::Work;

constexpr std::uint64_t megabyte = 1'000'000;

TransferRate rateAfter(const std::vector<std::uint64_t>& bytesEachHalfSecond) {
    TransferRate rate;
    TransferRate::Time time{};
    for (const auto bytes : bytesEachHalfSecond) rate.add(time += 500ms, bytes);
    return rate;
}

std::vector<std::uint64_t> steady(std::size_t count, std::uint64_t start, std::uint64_t each) {
    std::vector<std::uint64_t> bytes;
    for (std::size_t i = 0; i < count; ++i) bytes.push_back(start + i * each);
    return bytes;
}

TEST(TransferRate, UnknownRatesAreNotShown) {
    EXPECT_FALSE(rateAfter({megabyte}).perSecond()) << "the first bytes are only buffered";
    EXPECT_DOUBLE_EQ(rateAfter(steady(2, 5 * megabyte, megabyte)).perSecond().value(), 2e6);
    EXPECT_NEAR(rateAfter(steady(40, 0, megabyte)).perSecond().value(), 2e6, 1);

    EXPECT_FALSE(rateAfter(steady(6, 0, megabyte)).left(20 * megabyte)) << "observed for 2.5 seconds";
    EXPECT_EQ(rateAfter(steady(7, 0, megabyte)).left(20 * megabyte), 10s);
    EXPECT_FALSE(rateAfter(steady(7, 0, 10)).left(1000 * megabyte)) << "weeks";

    auto slower = steady(20, 0, megabyte);
    for (int i = 0; i < 6; ++i) slower.push_back(slower.back());
    EXPECT_NEAR(rateAfter(slower).perSecond().value(), 2e6 / 2.718, 1e4) << "three seconds without progress";
    for (int i = 0; i < 100; ++i) slower.push_back(slower.back());
    EXPECT_FALSE(rateAfter(slower).left(megabyte)) << "stalled";
    EXPECT_GE(rateAfter({megabyte, 2 * megabyte, 0}).perSecond().value(), 0) << "begun again";
}

class Meter : public ::testing::Test {
protected:
    void move(std::uint64_t bytes, std::chrono::milliseconds after) {
        clock.advance(after);
        meter.fileMoved(bytes);
    }

    testing::FakeClock clock;
    std::vector<TransferProgress> reports;
    ProgressMeter meter{clock, [this](const TransferProgress& progress) { reports.push_back(progress); }};
};

TEST_F(Meter, ShortTransfersAreNotReported) {
    meter.begin(Work::uploading);
    for (const char* const path : {"first", "second"}) {
        reports.clear();
        meter.fileBegins(path, 10 * megabyte);
        move(megabyte, 500ms);
        move(2 * megabyte, 499ms);
        EXPECT_TRUE(reports.empty());
        move(3 * megabyte, 501ms);
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].file->path, path);
        EXPECT_EQ(reports[0].file->bytes, 3 * megabyte);
        EXPECT_NEAR(reports[0].file->rate.value(), 2e6, 1e4);
        EXPECT_FALSE(reports[0].file->left);
    }
    move(11 * megabyte, 500ms);
    EXPECT_FALSE(reports.back().file->size) << "the server reported a size that was too small";
    EXPECT_EQ(reports.back().file->bytes, 11 * megabyte);
}

TEST_F(Meter, ManyFilesMakeFewReports) {
    meter.begin(Work::downloading);
    meter.folderListed(2500);
    for (int i = 0; i < 2500; ++i) {
        clock.advance(1ms);
        meter.fileDone();
    }
    ASSERT_EQ(reports.size(), 4U); // at 1, 1.5, 2 and 2.5 seconds
    EXPECT_EQ(reports.front().filesDone, 1000U);
    EXPECT_EQ(reports.back().filesDone, 2500U);
    EXPECT_EQ(reports.back().filesQueued, 2500U);
    EXPECT_EQ(reports.back().folders, 1U);
}

} // namespace
} // namespace zembrastel
