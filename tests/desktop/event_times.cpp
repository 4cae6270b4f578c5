// Preloaded into the desktop program, notes every turn of its main thread that keeps the window waiting.
//
// A turn is what the event loop (GLib's, on which Qt's runs) does between two waits. A turn of more than 20 ms, or of
// as many as EVENT_TIMES_LEAST says, becomes a line of the file that EVENT_TIMES_FILE names: its milliseconds, those of
// them that the program is to answer for, the event that took most of them, and how long the thread computed. Time in
// which the thread could run but had no processor, or the machine had none, is not counted: a busy machine must not
// look like a slow program. Nor is the program to answer for a display server that had none, whose process
// EVENT_TIMES_DISPLAY names, but for all that it computed itself.
#include "support/processor_wait.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <glib.h>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

Milliseconds leastToNote() {
    constexpr Milliseconds usual{20};
    const char* const wanted = std::getenv("EVENT_TIMES_LEAST");
    return wanted == nullptr ? usual : Milliseconds(std::strtod(wanted, nullptr));
}

std::string accountOfDisplay() {
    const char* const process = std::getenv("EVENT_TIMES_DISPLAY");
    return process == nullptr ? "" : std::string("/proc/") + process + "/schedstat";
}

class TurnWatch : public QObject {
public:
    explicit TurnWatch(const char* file) : report(open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
        begin();
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* receiver, QEvent* event) override {
        const auto now = Clock::now();
        endHandling(now);
        handled = {.receiver = receiver->metaObject()->className(), .type = event->type(), .from = now};
        return false;
    }

    void begin() {
        waited = ownWait.soFar();
        stolen = hostTheft.soFar();
        displayWaited = displayWait.soFar();
        computedBefore = computed();
        began = Clock::now();
        handled = slowest = {.from = began};
    }

    void end() {
        const auto now = Clock::now();
        endHandling(now);
        const Milliseconds all = now - began;
        if (all < worthNoting) return;
        const Milliseconds theft = hostTheft.soFar() - stolen;
        const Milliseconds took = all - (ownWait.soFar() - waited) - theft;
        if (took < worthNoting) return;
        const Milliseconds computing = Milliseconds(computed() - computedBefore) - theft;
        const Milliseconds own = std::max<Milliseconds>(took - (displayWait.soFar() - displayWaited), computing);
        dprintf(
            report, "%.1f %.1f %s, event %d, took %.1f; %.1f computing\n", took.count(), own.count(), slowest.receiver,
            slowest.type, Milliseconds(slowest.took).count(), computing.count());
    }

private:
    struct Handling {
        const char* receiver = "nothing"; // its class
        QEvent::Type type = QEvent::None;
        Clock::time_point from;
        Clock::duration took{};
    };

    static std::chrono::nanoseconds computed() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }

    void endHandling(Clock::time_point now) {
        handled.took = now - handled.from;
        if (handled.took > slowest.took) slowest = handled;
    }

    const int report;
    const Milliseconds worthNoting = leastToNote();
    const zembrastel::testing::ProcessorWait ownWait;
    const zembrastel::testing::HostTheft hostTheft;
    const zembrastel::testing::ProcessorWait displayWait{accountOfDisplay().c_str()};
    Clock::time_point began;
    std::chrono::nanoseconds waited{};
    std::chrono::nanoseconds stolen{};
    std::chrono::nanoseconds displayWaited{};
    std::chrono::nanoseconds computedBefore{};
    Handling handled;
    Handling slowest;
};

TurnWatch* watch = nullptr;

gint waitBetweenTurns(GPollFD* descriptors, guint count, gint timeout) {
    watch->end();
    const auto ready = poll(reinterpret_cast<pollfd*>(descriptors), count, timeout);
    watch->begin();
    return ready;
}

void watchTurns() {
    unsetenv("LD_PRELOAD"); // not for the programs that this one starts
    const char* const file = std::getenv("EVENT_TIMES_FILE");
    if (file == nullptr) return;
    watch = new TurnWatch(file); // for as long as the program runs
    g_main_context_set_poll_func(nullptr, waitBetweenTurns);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchTurns)
