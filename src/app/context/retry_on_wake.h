// Has the model try again at once what waits for a retry, whenever the machine wakes up or its network is back.
//
// Main context; one object a process. The model and the context must outlive it.
#pragma once

#include "app/app_model.h"
#include "platform/wake_signals.h"

#include <memory>

namespace zembrastel {

class RetryOnWake {
public:
    RetryOnWake(MainContext& context, AppModel& model);

private:
    // Watched by what is posted, which may come when this object has gone.
    std::shared_ptr<AppModel*> woken;
    WakeSignals signals;
};

} // namespace zembrastel
