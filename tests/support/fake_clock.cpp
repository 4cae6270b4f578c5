#include "support/fake_clock.h"

namespace zembrastel::testing {

using namespace std::chrono;

system_clock::time_point FakeClock::now() const {
    const std::lock_guard lock(mutex);
    return sys_days{2024y / January / 1} + duration_cast<system_clock::duration>(passed);
}

steady_clock::time_point FakeClock::steadyNow() const {
    const std::lock_guard lock(mutex);
    return steady_clock::time_point(hours(1) + passed);
}

bool FakeClock::sleep(const std::stop_token& stop, nanoseconds duration) {
    if (stop.stop_requested()) return false;
    {
        const std::lock_guard lock(mutex);
        recorded.push_back(duration);
    }
    if (onSleep && !onSleep(duration)) {
        std::unique_lock lock(mutex);
        never.wait(lock, stop, [] { return false; });
        return false;
    }
    advance(duration);
    return !stop.stop_requested();
}

std::vector<nanoseconds> FakeClock::sleeps() const {
    const std::lock_guard lock(mutex);
    return recorded;
}

void FakeClock::advance(nanoseconds duration) {
    const std::lock_guard lock(mutex);
    passed += duration;
}

} // namespace zembrastel::testing
