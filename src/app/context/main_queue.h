// A main context without a user interface: a queue. The thread that calls runUntil() runs the work.
//
// post(), postAfter() and quit() may be called from any thread; runUntil() from one at a time.
#pragma once

#include "app/context/main_context.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace zembrastel {

class MainQueue final : public MainContext {
public:
    void post(std::function<void()> work) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;

    // Works until the condition holds, quit() is called, or the time is over. The condition is tested before each piece
    // of work. Returns whether it holds.
    bool runUntil(const std::function<bool()>& condition);
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds atMost);

    // Ends runUntil(), now or when it is next called, after the work in hand. The queue stays as it is.
    void quit();

private:
    using Time = std::chrono::steady_clock::time_point;

    bool runUntilTime(const std::function<bool()>& condition, Time end);

    std::mutex mutex;
    std::condition_variable changed;
    std::multimap<Time, std::function<void()>> work; // by the time when it is due, in the order of posting
    bool quitting = false;
};

} // namespace zembrastel
