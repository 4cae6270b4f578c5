// Ctrl-C and the requests to end (SIGINT, SIGTERM, SIGHUP), as a call instead of a signal handler.
//
// One object, made in main() before any other thread: it blocks the signals everywhere and has a thread of its own wait
// for them. The first signal within during() calls the action. One outside of it, or one that comes when the program
// should long have ended, ends it at once, as if it had never been blocked. A SIGHUP that was ignored when the program
// started (nohup) stays so.
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

    // Takes the action back when it goes, and waits for one that is running.
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

    // For as long as the scope lives, an interrupt calls `action`, on the waiting thread: it must be quick and must not
    // throw. After an interrupt the action is called at once. Scopes may be nested; the innermost counts.
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
