#include "app/context/main_context.h"

#include "model/error.h"

#include <algorithm>
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

bool MainQueue::runUntil(const std::function<bool()>& condition) { return runUntilTime(condition, Time::max()); }

bool MainQueue::runUntil(const std::function<bool()>& condition, std::chrono::milliseconds atMost) {
    return runUntilTime(condition, std::chrono::steady_clock::now() + atMost);
}

bool MainQueue::runUntilTime(const std::function<bool()>& condition, Time end) {
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::unique_lock lock(mutex);
        while (!quitting && (work.empty() || work.begin()->first > std::chrono::steady_clock::now())) {
            if (std::chrono::steady_clock::now() >= end) return false;
            const Time next = work.empty() ? end : std::min(end, work.begin()->first);
            if (next == Time::max()) {
                changed.wait(lock);
            } else {
                changed.wait_until(lock, next);
            }
        }
        if (quitting) {
            quitting = false;
            return false;
        }
        const auto due = work.extract(work.begin());
        lock.unlock();
        due.mapped()();
    }
    return true;
}

} // namespace zembrastel
