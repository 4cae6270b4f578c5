// The thread that owns the model, as the rest of the program sees it.
//
// A desktop program implements it on its event loop, the command line and the tests on MainQueue.
#pragma once

#include <chrono>
#include <functional>
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

} // namespace zembrastel
