// Wall time, and a sleep that a stop request ends.
//
// All code that waits or records a time takes a Clock, so that a test can run hours in a moment. Any thread.
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

    // Sleeps for `duration`. Returns false at once when a stop was or is requested.
    [[nodiscard]] virtual bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) = 0;
};

// The machine's clock. It has no state; one object serves the whole process.
[[nodiscard]] Clock& systemClock();

} // namespace zembrastel
