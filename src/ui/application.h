// The start of the Qt application, and its end on a signal.
//
// Main thread, once.
#pragma once

#include "platform/descriptor.h"

#include <QApplication>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace zembrastel::ui {

// Creates the application, which needs a display to show windows on.
//
// If no window can be opened, ends the program with exit code 1 and one line on standard error. Qt by itself would
// abort, or wait without end for a display that does not answer; here that wait ends after 20 seconds. Other messages
// of Qt are printed as usual. `argc` and `argv` must outlive the application.
[[nodiscard]] std::unique_ptr<QApplication> startApplication(int& argc, char** argv);

// Ends the program in good order on SIGTERM, SIGINT or SIGHUP.
//
// The constructor blocks the signals in its thread, and so in all threads that this thread starts later. Construct it
// before any other thread and before the application.
class Termination {
public:
    // Throws std::system_error.
    Termination();

    // Calls `end` on the main thread when a signal arrives, or at once if one has already arrived. Needs the
    // application.
    void onRequest(std::function<void()> end);

private:
    Descriptor signals;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace zembrastel::ui
