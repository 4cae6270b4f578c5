// Ends the program in good order when it is asked to by a signal: SIGTERM, SIGINT or SIGHUP.
//
// The signals are blocked in the thread that makes the object, and with it in all that it starts: make it before any
// other thread is there, and before the application.
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

    // Has `end` called on the main thread when a signal comes, or at once when one has come already. Needs the
    // application.
    void whenAsked(std::function<void()> end);

private:
    Descriptor signals;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace zembrastel::ui
