// Threads of the model, and the order of the tasks of one profile.
#pragma once

#include "app/context/lifetime.h"
#include "app/context/main_context.h"

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>

namespace zembrastel {

// The threads. They are stopped and joined before the model is destroyed.
//
// Main context. A thread whose body has ended is joined at once, so that ended threads do not accumulate.
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

// Runs the tasks of one profile one at a time.
//
// A task that was stopped still completes its last step, such as the renames of a publication (up to a second). The
// next task of the profile must not begin before: it would read the server and the journal in the middle of that step,
// and then replace what the step made live, or what a colleague made of it. Any thread.
class TaskLane {
public:
    // Waits until no other task of this lane runs, then runs this one. If a stop is requested before that, it is not
    // run at all. What the task throws is passed on.
    void run(const std::function<void(const std::stop_token&)>& task, const std::stop_token& stop);

private:
    std::mutex mutex;
    std::condition_variable_any ended;
    bool busy = false;
};

} // namespace zembrastel
