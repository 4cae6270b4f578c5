// The cancellation handle of one job: ends the transfer under way and refuses every later one.
//
// Shared by the model, which cancels (main context), and the transport calls of the job (their own thread). Holds the
// program's one lock, never while waiting for a child process.
#pragma once

#include <mutex>

namespace zembrastel {

class ChildProcess;

class TransferControl {
public:
    // What a stop does to a child that runs.
    enum class AtStop {
        ends,    // it is asked to end
        lastsOut // its thread watches isStopped() and gives it a little time
    };

    // Starts `child` and remembers it until clear(). Throws Cancelled, starting nothing, once the control is stopped;
    // a failed start is thrown as ChildProcess::start() throws it.
    void launch(ChildProcess& child, AtStop atStop = AtStop::ends);

    // Throws Cancelled once the control is stopped. Called between the steps of every long loop.
    void check() const;

    [[nodiscard]] bool isStopped() const;

    // Stops the control for good and asks a running child to end, unless that lasts out. Returns without waiting for
    // it.
    void cancel();

    // Changes what a stop does to the child that launch() started. Throws Cancelled, changing nothing, once the control
    // is stopped.
    void change(ChildProcess& child, AtStop atStop);

    // Forgets the child, which must still be uncollected.
    void clear();

private:
    mutable std::mutex lock;
    ChildProcess* process = nullptr; // that a stop ends
    bool stopped = false;
};

} // namespace zembrastel
