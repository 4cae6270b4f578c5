// A clock on which hours pass in a moment: sleeping moves it on instead of waiting.
//
// Threads sleep on it and the test looks at it, at the same time. Set onSleep before the first of them starts.
#pragma once

#include "platform/clock.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

namespace zembrastel::testing {

class FakeClock : public Clock {
public:
    // Called in the thread that is about to sleep, with the duration: the place to change what the next step will see.
    // When it returns false, the sleep lasts until a stop is requested; so a test lets a loop run so many rounds.
    std::function<bool(std::chrono::nanoseconds)> onSleep;

    [[nodiscard]] std::chrono::system_clock::time_point now() const override;
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override;
    [[nodiscard]] bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) override;

    // The duration of every sleep so far, in their order.
    [[nodiscard]] std::vector<std::chrono::nanoseconds> sleeps() const;

    // Lets time pass for everyone.
    void advance(std::chrono::nanoseconds duration);

private:
    mutable std::mutex mutex;
    std::condition_variable_any never; // only a stop request ends a wait on it
    std::chrono::nanoseconds passed{0};
    std::vector<std::chrono::nanoseconds> recorded;
};

} // namespace zembrastel::testing
