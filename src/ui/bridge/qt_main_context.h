// The main context on Qt's event loop.
//
// Made and destroyed on the main thread, after the model's threads have ended; posting is for any thread. What is
// posted once the application has gone is dropped unseen, as is what was still waiting. Posted work must not throw.
#pragma once

#include "app/context/main_context.h"

#include <QObject>

#include <deque>
#include <functional>
#include <mutex>

namespace zembrastel::ui {

class QtMainContext final : public MainContext {
public:
    QtMainContext();
    QtMainContext(const QtMainContext&) = delete;
    QtMainContext& operator=(const QtMainContext&) = delete;
    ~QtMainContext() override;

    void post(std::function<void()> work) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;

private:
    // Lives on the main thread. Its events carry nothing: what is to be done lies in a queue of our own, under a lock
    // that the thread sanitizer can see, which Qt's locks are not.
    class Receiver final : public QObject {
    public:
        explicit Receiver(QtMainContext& served) : context(served) {}

    private:
        void customEvent(QEvent*) override { context.runNext(); }

        QtMainContext& context;
    };

    void close();
    void runNext();

    // Held while Qt is told of work. The main thread, which that wakes, takes it at the end alone: a thread that loses
    // its processor at that moment would keep the window waiting.
    std::mutex posting;
    bool open = true;
    std::mutex queue; // taken for moments
    std::deque<std::function<void()>> waiting;
    Receiver receiver{*this}; // last, so that no event comes for what has gone
};

} // namespace zembrastel::ui
