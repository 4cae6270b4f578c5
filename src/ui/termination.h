// Ends the program in good order on SIGTERM, SIGINT or SIGHUP.
//
// The constructor blocks the signals in its thread, and so in all threads that this thread starts later. Construct it
// before any other thread and before the application.
#pragma once

#include "platform/descriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace zembrastel::ui {

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
