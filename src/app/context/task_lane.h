// Runs the tasks of one profile one at a time.
//
// A task that was stopped still ends its last step, such as the renames of a publication (up to a second). The next
// task of the profile must not begin before: it would read the server and the journal in the middle of that step, and
// then replace what the step made live, or what a colleague made of it. Any thread.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>

namespace zembrastel {

class TaskLane {
public:
    // Waits until no other task of this lane runs, then runs this one. If a stop is requested before that, it is not
    // run at all. What the task throws is passed on.
    void run(const std::function<void(const std::stop_token&)>& task, const std::stop_token& stop);

private:
    std::mutex mutex;
    std::condition_variable_any ended;
    bool busy = false;
};

} // namespace zembrastel
