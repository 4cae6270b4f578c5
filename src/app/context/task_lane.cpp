#include "app/context/task_lane.h"

namespace zembrastel {

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
