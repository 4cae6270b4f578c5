// The cancellation handle of one job: ends the running transfer and refuses every later one.
//
// Shared by the model, which cancels (main context), and the job's transport calls (their own thread). Its lock is
// never held while waiting for a child process.
#pragma once

#include <mutex>

namespace zembrastel {

class ChildProcess;

class TransferControl {
public:
    // The effect of a stop on a running child.
    enum class AtStop {
        ends,    // it is terminated
        lastsOut // its thread watches isStopped() and lets it finish for a short time
    };

    // Starts `child` and remembers it until clear(). Throws Cancelled without starting it if the control is stopped. A
    // failed start throws as ChildProcess::start() does.
    void launch(ChildProcess& child, AtStop atStop = AtStop::ends);

    // Throws Cancelled if the control is stopped. Call it between the steps of every long loop.
    void check() const;

    [[nodiscard]] bool isStopped() const;

    // Stops the control for good and terminates a running child, except one started with AtStop::lastsOut. Does not
    // wait for it.
    void cancel();

    // Changes what a stop does to the child that launch() started. Throws Cancelled, changing nothing, once the control
    // is stopped.
    void change(ChildProcess& child, AtStop atStop);

    // Forgets the child. Call it before the child is collected.
    void clear();

private:
    mutable std::mutex lock;
    ChildProcess* process = nullptr; // terminated by a stop
    bool stopped = false;
};

} // namespace zembrastel
