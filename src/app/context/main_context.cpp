#include "app/context/main_context.h"

#include "model/error.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace zembrastel {

void runOnMain(MainContext& context, const std::stop_token& stop, std::function<void()> work) {
    struct Completion {
        std::mutex mutex;
        std::condition_variable_any changed;
        bool done = false;
    };
    // Shared, because a stopped caller leaves before the work runs.
    const auto completion = std::make_shared<Completion>();
    context.post([completion, work = std::move(work)] {
        work();
        const std::lock_guard lock(completion->mutex);
        completion->done = true;
        completion->changed.notify_all();
    });
    std::unique_lock lock(completion->mutex);
    if (!completion->changed.wait(lock, stop, [&completion] { return completion->done; })) throw Cancelled();
}

} // namespace zembrastel
