// The system's clock, on which polls and pauses are so many times shorter.
#pragma once

#include "platform/clock.h"

namespace zembrastel::testing {

class HastyClock final : public Clock {
public:
    explicit HastyClock(int factor) : hurry(factor) {}

    std::chrono::system_clock::time_point now() const override { return systemClock().now(); }
    std::chrono::steady_clock::time_point steadyNow() const override { return systemClock().steadyNow(); }
    bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) override {
        return systemClock().sleep(stop, duration / hurry);
    }

private:
    const int hurry;
};

} // namespace zembrastel::testing
