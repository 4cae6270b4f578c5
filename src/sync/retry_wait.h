// The wait of a job before the next attempt after a failure. It grows with each failure, and can be ended early, for
// example when the network is back.
//
// Shared by the job, which waits (its own thread), and the model, which wakes it (main context). Its lock is never held
// during the wait.
#pragma once

#include "platform/clock.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>

namespace zembrastel {

inline constexpr std::chrono::seconds firstRetryDelay{5};

// 5, 10, 20, 40, 60, 60, … seconds.
[[nodiscard]] std::chrono::seconds nextRetryDelay(std::chrono::seconds delay);

class RetryWait {
public:
    // The duration of the next wait.
    [[nodiscard]] std::chrono::seconds delay() const;

    // Call it after a success: the next wait is the shortest again.
    void reset();

    // Waits; the next wait is longer. False if a stop was requested.
    [[nodiscard]] bool sleep(Clock& clock, const std::stop_token& stop);

    // Ends a running wait. The next wait is the shortest again, even if none is running: the present attempt may have
    // started before the reason for this call.
    void wake();

    // Requests that this file, which waits after a failure of its own, is tried again at the next poll.
    void wake(const std::string& path);

    // The files of these requests, once.
    [[nodiscard]] std::set<std::string> takeWokenFiles();

private:
    [[nodiscard]] std::chrono::seconds begin(const std::stop_source& wait);
    void end();

    mutable std::mutex mutex;
    std::chrono::seconds next = firstRetryDelay;
    std::optional<std::stop_source> waiting;
    std::set<std::string> wokenFiles;
};

} // namespace zembrastel
