// The application of the tests, which holds every test to what a user feels: no event may keep the window waiting.
//
// Main thread. Time in which the thread could run but had no processor, or the machine had none, is not counted, so
// that a busy machine does not look like a slow program; built with a sanitizer, it only measures.
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

    // The event that took longest since the last call.
    [[nodiscard]] Handling takeLongest();

private:
    const ProcessorWait processorWait;
    const HostTheft hostTheft;
    bool handling = false;
    Handling longest;
};

// Has each test fail in which an event took longer than a user may wait.
void holdEventsToTime(TimedApplication& application);

} // namespace zembrastel::testing
