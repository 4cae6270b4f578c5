#include "sync/retry_wait.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::chrono::seconds longestRetryDelay{60};

} // namespace

std::chrono::seconds nextRetryDelay(std::chrono::seconds delay) { return std::min(delay * 2, longestRetryDelay); }

std::chrono::seconds RetryWait::delay() const {
    const std::lock_guard lock(mutex);
    return next;
}

void RetryWait::reset() {
    const std::lock_guard lock(mutex);
    next = firstRetryDelay;
}

std::chrono::seconds RetryWait::begin(const std::stop_source& wait) {
    const std::lock_guard lock(mutex);
    waiting = wait;
    const auto now = next;
    next = nextRetryDelay(next);
    return now;
}

void RetryWait::end() {
    const std::lock_guard lock(mutex);
    waiting.reset();
}

// The clock sleeps on a stop source of this wait, which both a stop of the job and wake() end.
bool RetryWait::sleep(Clock& clock, const std::stop_token& stop) {
    std::stop_source wait;
    const std::stop_callback stopped(stop, [&wait] { wait.request_stop(); });
    (void)clock.sleep(wait.get_token(), begin(wait));
    end();
    return !stop.stop_requested();
}

void RetryWait::wake() {
    std::optional<std::stop_source> ended;
    {
        const std::lock_guard lock(mutex);
        next = firstRetryDelay;
        ended = waiting;
    }
    if (ended) ended->request_stop();
}

void RetryWait::wake(const std::string& path) {
    const std::lock_guard lock(mutex);
    wokenFiles.insert(path);
}

std::set<std::string> RetryWait::takeWokenFiles() {
    const std::lock_guard lock(mutex);
    return std::exchange(wokenFiles, {});
}

} // namespace zembrastel
