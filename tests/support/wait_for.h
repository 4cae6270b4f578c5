// Waiting for what happens outside this process and gives no sign of it: another process, a server's disk.
//
// The last resort of a test. Inside the process wait for the event itself.
#pragma once

#include <chrono>
#include <thread>

namespace zembrastel::testing {

// Far more than what is done at once takes on a busy machine. A test measures with it what would otherwise take
// minutes.
inline constexpr std::chrono::seconds atOnce{10};

// Asks `condition` again and again until it is true. False when that does not come within `limit`.
template <class Condition>
[[nodiscard]] bool eventually(Condition condition, std::chrono::seconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace zembrastel::testing
