// Letting a queue come to what was posted to it: where nothing more is to come of something, a test looks after that.
#pragma once

#include "app/context/main_context.h"

#include <chrono>

namespace zembrastel::testing {

// Works off all that has been posted so far; what is posted meanwhile may be left. False when that takes too long.
[[nodiscard]] inline bool workOff(MainQueue& queue) {
    bool reached = false;
    queue.post([&reached] { reached = true; });
    return queue.runUntil([&reached] { return reached; }, std::chrono::seconds(30));
}

} // namespace zembrastel::testing
