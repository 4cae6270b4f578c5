// Makes jobs that wait for a retry do it at once when the machine wakes up or its network is back.
//
// Main context; one object a process. The model and the context must outlive it.
#pragma once

#include "app/app_model.h"
#include "app/context/lifetime.h"
#include "platform/wake_signals.h"

namespace zembrastel {

class RetryOnWake {
public:
    RetryOnWake(MainContext& context, AppModel& model)
        : signals([this, &context, &model] { context.post(lifetime.guard([&model] { model.retryNow(); })); }) {}

private:
    Lifetime lifetime;
    WakeSignals signals; // last: its thread ends first
};

} // namespace zembrastel
