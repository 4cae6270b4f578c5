#include "platform/clock.h"

#include <condition_variable>
#include <mutex>

namespace zembrastel {
namespace {

class SystemClock final : public Clock {
public:
    std::chrono::system_clock::time_point now() const override { return std::chrono::system_clock::now(); }

    std::chrono::steady_clock::time_point steadyNow() const override { return std::chrono::steady_clock::now(); }

    bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) override {
        std::mutex mutex;
        std::condition_variable_any wake;
        std::unique_lock lock(mutex);
        wake.wait_for(lock, stop, duration, [] { return false; });
        return !stop.stop_requested();
    }
};

} // namespace

Clock& systemClock() {
    static SystemClock clock;
    return clock;
}

} // namespace zembrastel
