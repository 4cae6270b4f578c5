// The thread that owns the model, as the rest of the program sees it.
//
// A desktop program implements it on its event loop, the command line and the tests on MainQueue.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <stop_token>

namespace zembrastel {

class MainContext {
public:
    virtual ~MainContext() = default;

    // Runs `work` on the main context, after all work posted before. Any thread.
    virtual void post(std::function<void()> work) = 0;

    // The same, once `delay` has passed.
    virtual void postAfter(std::chrono::milliseconds delay, std::function<void()> work) = 0;
};

// Runs `work` on the main context and returns once it has run. Throws Cancelled if a stop is requested before: the
// work may then still run later. Never call it on the main context itself.
void runOnMain(MainContext& context, const std::stop_token& stop, std::function<void()> work);

// A main context without a user interface: a queue. The thread that calls runUntil() runs the work.
//
// post(), postAfter() and quit() may be called from any thread; runUntil() from one at a time.
class MainQueue final : public MainContext {
public:
    void post(std::function<void()> work) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;

    // Works until the condition holds, quit() is called, or the time has passed. The condition is tested before each
    // piece of work. Returns whether it holds.
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
