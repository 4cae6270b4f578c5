// The main context on Qt's event loop.
//
// Created and destroyed on the main thread, after the model's threads have ended. Any thread may post. Work that was
// not run before the application ended is dropped. Posted work must not throw.
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
    // Lives on the main thread. Its events carry no data: the work lies in a queue of our own, because the thread
    // sanitizer sees our lock but not Qt's.
    class Receiver final : public QObject {
    public:
        explicit Receiver(QtMainContext& served) : context(served) {}

    private:
        void customEvent(QEvent*) override { context.runNext(); }

        QtMainContext& context;
    };

    void close();
    void runNext();

    // Held while Qt is notified. The main thread takes it only in close(): otherwise a poster that lost its processor
    // here would block the window.
    std::mutex posting;
    bool open = true;
    std::mutex queue; // held only for moments
    std::deque<std::function<void()>> waiting;
    Receiver receiver{*this}; // last, so that no event arrives after the members above are gone
};

} // namespace zembrastel::ui
