#include "app/notices.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Health = ObservedProfile::Health;
using Kind = Notice::Kind;

struct Step {
    std::chrono::seconds at;
    Health health;
    std::size_t toReview = 0;
    std::vector<Kind> due{};
    bool seen = false;
};

void expectNotices(const std::string& harm, const std::vector<Step>& steps) {
    const Uuid id = Uuid::random();
    Notices notices;
    for (const auto& step : steps) {
        std::vector<Kind> due;
        const ObservedProfile observed{.id = id, .health = step.health, .toReview = step.toReview};
        for (const auto& notice : notices.update({observed}, Notices::Time(step.at), step.seen))
            due.push_back(notice.kind);
        EXPECT_EQ(due, step.due) << harm << ", at " << step.at.count();
    }
}

TEST(Notices, FailureIsShownOnceAndOnlyIfItLasts) {
    expectNotices(
        "a short failure bothers", {{0s, Health::failing},
                                    {59s, Health::working},
                                    {60s, Health::failing},
                                    {61s, Health::well},
                                    {70s, Health::failing},
                                    {125s, Health::failing}});
    expectNotices(
        "each retry is shown", {{0s, Health::failing},
                                {30s, Health::working},
                                {31s, Health::failing},
                                {61s, Health::failing, 0, {Kind::failing}},
                                {100s, Health::working},
                                {101s, Health::failing},
                                {900s, Health::failing},
                                {901s, Health::working},
                                {902s, Health::well, 0, {Kind::recovered}},
                                {903s, Health::well},
                                {910s, Health::failing},
                                {980s, Health::failing, 0, {Kind::failing}}});
    expectNotices(
        "a pause is taken for a recovery", {{0s, Health::failing},
                                            {61s, Health::failing, 0, {Kind::failing}},
                                            {62s, Health::stopped, 0, {Kind::failureIsOver}},
                                            {63s, Health::working},
                                            {64s, Health::well}});
}

TEST(Notices, ReviewIsShownOnceUnlessItIsSeen) {
    expectNotices(
        "a review is missed, or shown twice", {{0s, Health::working},
                                               {1s, Health::well, 3, {Kind::reviewWaits}},
                                               {2s, Health::well, 3},
                                               {3s, Health::well, 2},
                                               {4s, Health::well, 0, {Kind::reviewIsOver}},
                                               {5s, Health::well, 1, {Kind::reviewWaits}}});
    expectNotices(
        "a visible review is notified", {{0s, Health::well, 3, {}, true}, {1s, Health::well, 3}, {2s, Health::well}});
}

TEST(Notices, RemovedProfileLeavesNoNotice) {
    Notices notices;
    const ObservedProfile first{.id = Uuid::random(), .health = Health::failing};
    const ObservedProfile second{.id = Uuid::random(), .health = Health::failing, .toReview = 1};
    EXPECT_FALSE(notices.nextUpdate());
    EXPECT_TRUE(notices.update({first}, Notices::Time(0s), false).empty());
    EXPECT_EQ(
        notices.update({first, second}, Notices::Time(20s), false),
        (std::vector<Notice>{{Kind::reviewWaits, second.id}}));
    ASSERT_TRUE(notices.nextUpdate());
    const auto due = *notices.nextUpdate();
    EXPECT_EQ(notices.update({first, second}, due, false), (std::vector<Notice>{{Kind::failing, first.id}}));
    EXPECT_GT(*notices.nextUpdate(), due);
    auto left = notices.update({}, due, false);
    EXPECT_EQ(left.size(), 2U);
    EXPECT_FALSE(notices.nextUpdate());
}

} // namespace
} // namespace zembrastel
