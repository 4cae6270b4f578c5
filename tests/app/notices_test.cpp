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
    bool mustChoose = false;
};

void expectNotices(const std::string& harm, const std::vector<Step>& steps) {
    const Uuid id = Uuid::random();
    Notices notices;
    for (const auto& step : steps) {
        std::vector<Kind> due;
        const ObservedProfile observed{
            .id = id, .health = step.health, .toReview = step.toReview, .mustChoose = step.mustChoose};
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
        "a choice is missed, or shown twice", {{0s, Health::well, 0, {Kind::choiceWaits}, false, true},
                                               {1s, Health::well, 0, {}, false, true},
                                               {2s, Health::well, 0, {Kind::choiceIsOver}},
                                               {3s, Health::well, 0, {}, true, true}});
    expectNotices(
        "a visible review is notified", {{0s, Health::well, 3, {}, true}, {1s, Health::well, 3}, {2s, Health::well}});
}

TEST(Notices, LostNetworkIsShownOnceForAllProfiles) {
    Notices notices;
    const auto lost = [](const Uuid& id) {
        return ObservedProfile{.id = id, .health = Health::failing, .offline = true};
    };
    const Uuid a = Uuid::random();
    const Uuid b = Uuid::random();
    const auto kinds = [&](const std::vector<ObservedProfile>& profiles, std::chrono::seconds at) {
        std::vector<Kind> due;
        for (const auto& notice : notices.update(profiles, Notices::Time(at), false)) due.push_back(notice.kind);
        return due;
    };
    EXPECT_EQ(kinds({lost(a)}, 0s), std::vector<Kind>{});
    EXPECT_EQ(kinds({lost(a), lost(b)}, 61s), std::vector<Kind>{Kind::noNetwork});
    EXPECT_FALSE(notices.nextUpdate());
    EXPECT_EQ(kinds({lost(a), {.id = b, .health = Health::working}}, 200s), std::vector<Kind>{});
    // The network is back, and the server of one profile is not.
    const ObservedProfile well{.id = a, .health = Health::well};
    const ObservedProfile failing{.id = b, .health = Health::failing};
    EXPECT_EQ(kinds({well, failing}, 201s), std::vector<Kind>{Kind::networkIsBack});
    EXPECT_EQ(kinds({well, failing}, 262s), std::vector<Kind>{Kind::failing});
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
