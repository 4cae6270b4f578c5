// The model's threads: started together with what stops them, and joined before the model goes.
//
// Used on the main context alone. A thread whose body has ended is joined at once, so a program that runs for months
// keeps none of them.
#pragma once

#include "app/context/lifetime.h"
#include "app/context/main_context.h"

#include <functional>
#include <list>
#include <stop_token>
#include <thread>

namespace zembrastel {

class BackgroundTasks {
public:
    // Runs on its own thread. Must end soon after a stop is requested, and throw nothing.
    using Body = std::function<void(const std::stop_token&)>;

    explicit BackgroundTasks(MainContext& mainContext) : context(mainContext) {}
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;
    // Requests every task to stop and waits for it.
    ~BackgroundTasks() { stopAll(); }

    // The returned source stops the task; dropping it does not.
    [[nodiscard]] std::stop_source start(Body body);

    void stopAll();

private:
    using Threads = std::list<std::jthread>;

    MainContext& context;
    Threads threads;
    Lifetime lifetime; // of the threads in the list
};

} // namespace zembrastel
