// Turns Ctrl-C and the other requests to end (SIGINT, SIGTERM, SIGHUP) into a call, without a signal handler.
//
// One object, made in main() before any other thread: it blocks the signals in all threads, and its own thread waits
// for them. The first signal during a Scope calls the action of the scope. A signal outside of a scope, or one more
// than two seconds after the first, ends the program immediately, as if it had never been blocked. A SIGHUP that was
// ignored when the program started (nohup) stays ignored.
#pragma once

#include "platform/descriptor.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

namespace zembrastel::cli {

class Interrupt {
public:
    using Action = std::function<void()>;

    // Restores the previous action when it ends, and waits for a running action.
    class Scope {
    public:
        Scope(Interrupt& owner, Action replaced) : interrupt(owner), before(std::move(replaced)) {}
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope();

    private:
        Interrupt& interrupt;
        Action before;
    };

    // Throws std::system_error.
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    // While the scope lives, an interrupt calls `action` on the waiting thread: it must be quick and must not throw. If
    // there was an interrupt already, calls it immediately. Scopes may be nested; the innermost one counts.
    [[nodiscard]] Scope during(Action action);

    [[nodiscard]] bool happened() const;

private:
    void listen();
    void receive(int signalNumber);

    sigset_t signals{};
    Descriptor arrivals; // a signalfd
    Descriptor ending;   // an eventfd
    mutable std::mutex mutex;
    Action current;
    bool interrupted = false;
    std::chrono::steady_clock::time_point firstArrival;
    std::thread thread;
};

} // namespace zembrastel::cli
