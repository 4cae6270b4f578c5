// Has the model try again at once what waits for a retry, whenever the machine wakes up or its network is back.
//
// Main context; one object a process. The model and the context must outlive it.
#pragma once

#include "app/app_model.h"
#include "app/context/lifetime.h"
#include "platform/wake_signals.h"

namespace zembrastel {

class RetryOnWake {
public:
    RetryOnWake(MainContext& context, AppModel& model);

private:
    Lifetime lifetime;
    WakeSignals signals; // last: its thread ends first
};

} // namespace zembrastel
