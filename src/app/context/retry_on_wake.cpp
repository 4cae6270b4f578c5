#include "app/context/retry_on_wake.h"

namespace zembrastel {

RetryOnWake::RetryOnWake(MainContext& context, AppModel& model)
    : signals([this, &context, &model] { context.post(lifetime.guard([&model] { model.retryNow(); })); }) {}

} // namespace zembrastel
