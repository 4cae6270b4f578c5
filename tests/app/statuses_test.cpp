#include "app/statuses.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

TEST(Statuses, FullLogDropsItsOldestLine) {
    const Observers none;
    Statuses statuses(systemClock(), none);
    const Uuid id = Uuid::random();
    for (std::size_t line = 0; line <= ProfileStatus::maxActivities; ++line) statuses.log(id, std::to_string(line));
    const auto& log = statuses.of(id).activity;
    EXPECT_EQ(log.size(), 150U);
    EXPECT_EQ(log.front().text, "150");
    EXPECT_EQ(log.back().text, "1");
}

} // namespace
} // namespace zembrastel
