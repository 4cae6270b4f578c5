#include "app/main_queue.h"

#include <algorithm>

namespace zembrastel {

void MainQueue::post(std::function<void()> posted) { postAfter(std::chrono::milliseconds(0), std::move(posted)); }

void MainQueue::postAfter(std::chrono::milliseconds delay, std::function<void()> posted) {
    {
        const std::lock_guard lock(mutex);
        work.emplace(std::chrono::steady_clock::now() + delay, std::move(posted));
    }
    changed.notify_one();
}

void MainQueue::quit() {
    {
        const std::lock_guard lock(mutex);
        quitting = true;
    }
    changed.notify_one();
}

void MainQueue::run() {
    runUntilTime([] { return false; }, Time::max());
}

bool MainQueue::runUntil(const std::function<bool()>& condition, std::chrono::milliseconds atMost) {
    bool holds = false;
    const auto look = [&condition, &holds] { return holds = condition(); };
    runUntilTime(look, std::chrono::steady_clock::now() + atMost);
    return holds;
}

void MainQueue::runUntilTime(const std::function<bool()>& condition, Time end) {
    while (!condition()) {
        std::unique_lock lock(mutex);
        while (!quitting && (work.empty() || work.begin()->first > std::chrono::steady_clock::now())) {
            if (std::chrono::steady_clock::now() >= end) return;
            const Time next = work.empty() ? end : std::min(end, work.begin()->first);
            if (next == Time::max()) {
                changed.wait(lock);
            } else {
                changed.wait_until(lock, next);
            }
        }
        if (quitting) {
            quitting = false;
            return;
        }
        const auto due = work.extract(work.begin());
        lock.unlock();
        due.mapped()();
    }
}

} // namespace zembrastel
