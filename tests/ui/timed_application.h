// The application of the tests. It fails each test in which one event blocks the window noticeably.
//
// Main thread. Does not count time in which the thread was ready to run but had no processor, so that a busy machine
// does not look like a slow program. With a sanitizer it only measures.
#pragma once

#include "support/processor_wait.h"

#include <QApplication>

#include <chrono>

namespace zembrastel::testing {

class TimedApplication : public QApplication {
public:
    using Milliseconds = std::chrono::duration<double, std::milli>;

    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override;

    struct Handling {
        Milliseconds took{};
        QString what;
    };

    // How long this thread was kept from a processor.
    [[nodiscard]] std::chrono::nanoseconds waitedSoFar() const {
        return processorWait.soFar() + hostTheft.soFar() + quotaWait.soFar();
    }

    // Returns the slowest event since the last call.
    [[nodiscard]] Handling takeLongest();

private:
    const ProcessorWait processorWait;
    const HostTheft hostTheft;
    const QuotaWait quotaWait;
    bool handling = false;
    Handling longest;
};

// From now on each test fails in which an event took longer than 50 ms.
void holdEventsToTime(TimedApplication& application);

} // namespace zembrastel::testing
