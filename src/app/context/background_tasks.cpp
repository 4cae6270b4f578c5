#include "app/context/background_tasks.h"

#include <system_error>

namespace zembrastel {

std::stop_source BackgroundTasks::start(Body body) {
    const auto place = threads.emplace(threads.end());
    const auto reap = lifetime.guard([this, place] { threads.erase(place); }); // joins
    try {
        *place = std::jthread([&main = context, body = std::move(body), reap](const std::stop_token& stop) {
            body(stop);
            main.post(reap);
        });
    } catch (const std::system_error&) {
        threads.erase(place);
        throw;
    }
    return place->get_stop_source();
}

void BackgroundTasks::stopAll() {
    for (auto& thread : threads) thread.request_stop();
    lifetime.renew();
    threads.clear();
}

void TaskLane::run(const std::function<void(const std::stop_token&)>& task, const std::stop_token& stop) {
    struct Occupied {
        TaskLane& lane;
        explicit Occupied(TaskLane& occupied) : lane(occupied) {}
        Occupied(const Occupied&) = delete;
        Occupied& operator=(const Occupied&) = delete;
        ~Occupied() {
            {
                const std::scoped_lock lock(lane.mutex);
                lane.busy = false;
            }
            lane.ended.notify_all();
        }
    };

    {
        std::unique_lock lock(mutex);
        if (!ended.wait(lock, stop, [this] { return !busy; }) || stop.stop_requested()) return;
        busy = true;
    }
    const Occupied occupied(*this);
    task(stop);
}

} // namespace zembrastel
