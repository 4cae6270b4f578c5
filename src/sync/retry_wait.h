// The wait of a job before it tries again what failed: longer from failure to failure, and ended early when somebody
// knows that trying again is worth it.
//
// Shared by the job, which waits (its own thread), and the model, which wakes it (main context). Its lock is held for
// moments only.
#pragma once

#include "platform/clock.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <stop_token>

namespace zembrastel {

inline constexpr std::chrono::seconds firstRetryDelay{5};

// 5, 10, 20, 40, 60, 60, … seconds.
[[nodiscard]] std::chrono::seconds nextRetryDelay(std::chrono::seconds delay);

class RetryWait {
public:
    // How long the next wait lasts.
    [[nodiscard]] std::chrono::seconds delay() const;

    // What failed has worked: the next wait is the shortest again.
    void reset();

    // Waits; the next wait is longer. False when a stop was requested.
    [[nodiscard]] bool sleep(Clock& clock, const std::stop_token& stop);

    // Ends a wait that is under way, as though it were over. The next is the shortest again, also where none is under
    // way: what is being tried just now was begun before anybody knew better.
    void wake();

private:
    [[nodiscard]] std::chrono::seconds begin(const std::stop_source& wait);
    void end();

    mutable std::mutex mutex;
    std::chrono::seconds next = firstRetryDelay;
    std::optional<std::stop_source> waiting;
};

} // namespace zembrastel
