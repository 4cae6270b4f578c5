// The main context on Qt's event loop.
//
// Made and destroyed on the main thread, after the model's threads have ended; posting is for any thread. What is
// posted once the application has gone is dropped unseen, as is what was still waiting. Posted work must not throw.
#pragma once

#include "app/main_context.h"

#include <QObject>

#include <mutex>

namespace zembrastel {

class QtMainContext final : public MainContext {
public:
    QtMainContext();
    QtMainContext(const QtMainContext&) = delete;
    QtMainContext& operator=(const QtMainContext&) = delete;
    ~QtMainContext() override;

    void post(std::function<void()> work) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;

private:
    void close();

    QObject receiver; // lives on the main thread; what is posted goes with it
    std::mutex mutex;
    bool open = true;
};

} // namespace zembrastel
