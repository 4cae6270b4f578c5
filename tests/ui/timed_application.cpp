#include "timed_application.h"

#include <gtest/gtest.h>

#include <QEvent>

#include <utility>

namespace zembrastel::testing {
namespace {

using Clock = std::chrono::steady_clock;

constexpr TimedApplication::Milliseconds maxWait{50};

class EventLimit : public ::testing::EmptyTestEventListener {
public:
    explicit EventLimit(TimedApplication& timed) : application(timed) {}

    void OnTestStart(const ::testing::TestInfo&) override {
        (void)application.takeLongest();
        waitedBefore = application.waitedSoFar();
    }

    void OnTestEnd(const ::testing::TestInfo&) override {
        const auto [took, what] = application.takeLongest();
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        (void)what;
#else
        // A thread or a child process that the event waited for had to wait for a processor, too: about as long.
        const TimedApplication::Milliseconds waited = application.waitedSoFar() - waitedBefore;
        EXPECT_LE(took, maxWait + waited) << took.count() << " ms for " << what.toStdString();
#endif
    }

private:
    TimedApplication& application;
    std::chrono::nanoseconds waitedBefore{};
};

} // namespace

bool TimedApplication::notify(QObject* receiver, QEvent* event) {
    if (handling) return QApplication::notify(receiver, event);
    handling = true;
    const char* const name = receiver->metaObject()->className(); // the event may delete the receiver
    const int type = event->type();
    const auto waited = waitedSoFar();
    const auto began = Clock::now();
    const bool result = QApplication::notify(receiver, event);
    // Read before the waits: a wait in between is not part of the event.
    const Milliseconds all = Clock::now() - began;
    const Milliseconds took = all - (waitedSoFar() - waited);
    if (took > longest.took) longest = {took, QStringLiteral("event %1 of a %2").arg(type).arg(QLatin1String(name))};
    handling = false;
    return result;
}

TimedApplication::Handling TimedApplication::takeLongest() { return std::exchange(longest, {}); }

void holdEventsToTime(TimedApplication& application) {
    ::testing::UnitTest::GetInstance()->listeners().Append(new EventLimit(application));
}

} // namespace zembrastel::testing
