// Preloaded into the desktop program, notes every turn of its main thread that keeps the window waiting.
//
// A turn is what the event loop (GLib's, on which Qt's runs) does between two waits. A turn of more than 20 ms, or of
// as many as EVENT_TIMES_LEAST says, becomes a line of the file that EVENT_TIMES_FILE names: its milliseconds, those of
// them that the program is to answer for, the event that took most of them, and how long the thread computed.
//
// A busy machine must not look like a slow program. Time in which the thread could run but had no processor, or the
// machine had none, is not counted. The program is not to answer for as long as what the main thread may ask for
// something had no processor: the display server, whose process EVENT_TIMES_DISPLAY names, and the threads of Qt and
// GLib. It is to answer for all that it computed itself.
#include "support/processor_wait.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <glib.h>
#include <map>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/stat.h>
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

std::string read(const std::filesystem::path& file) {
    std::string line;
    std::getline(std::ifstream(file), line);
    return line;
}

// The threads that Qt and GLib have made for themselves: they have names, and the program's own have its name.
class LibraryThreads {
public:
    [[nodiscard]] std::chrono::nanoseconds waited() {
        look();
        std::chrono::nanoseconds sum{};
        for (const auto& [thread, wait] : waits) sum += wait->soFar();
        return sum;
    }

private:
    void look() {
        struct stat tasks {};
        if (stat("/proc/self/task", &tasks) != 0 || tasks.st_nlink == count) return;
        count = tasks.st_nlink;
        for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
            if (waits.contains(thread.path()) || read(thread.path() / "comm") == program) continue;
            waits[thread.path()] =
                std::make_unique<zembrastel::testing::ProcessorWait>((thread.path() / "schedstat").c_str());
        }
    }

    const std::string program = read("/proc/self/comm");
    nlink_t count = 0;
    std::map<std::filesystem::path, std::unique_ptr<zembrastel::testing::ProcessorWait>> waits;
};

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
        othersWaited = displayWait.soFar() + libraryThreads.waited();
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
        const Milliseconds others = displayWait.soFar() + libraryThreads.waited() - othersWaited;
        const Milliseconds own = std::max<Milliseconds>(took - others, computing);
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
    LibraryThreads libraryThreads;
    Clock::time_point began;
    std::chrono::nanoseconds waited{};
    std::chrono::nanoseconds stolen{};
    std::chrono::nanoseconds othersWaited{};
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
