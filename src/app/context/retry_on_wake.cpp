#include "app/context/retry_on_wake.h"

namespace zembrastel {

RetryOnWake::RetryOnWake(MainContext& context, AppModel& model)
    : woken(std::make_shared<AppModel*>(&model)), signals([&context, weak = std::weak_ptr(woken)] {
          context.post([weak] {
              if (const auto alive = weak.lock()) (*alive)->retryNow();
          });
      }) {}

} // namespace zembrastel
