// Wall time, and a sleep that a stop request ends.
//
// Everything that waits or notes a time takes a Clock, so that a test can run hours in a moment. Any thread.
#pragma once

#include <chrono>
#include <stop_token>

namespace zembrastel {

class Clock {
public:
    virtual ~Clock() = default;

    [[nodiscard]] virtual std::chrono::system_clock::time_point now() const = 0;

    // A time that never goes back, for measuring durations.
    [[nodiscard]] virtual std::chrono::steady_clock::time_point steadyNow() const = 0;

    // Sleeps for `duration`. False when a stop was requested before or meanwhile: the sleep then ends at once.
    [[nodiscard]] virtual bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) = 0;
};

// The machine's own clock. It has no state; the one object serves the whole process.
[[nodiscard]] Clock& systemClock();

} // namespace zembrastel
