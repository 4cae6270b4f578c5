// How a profile's status is shown: which symbol, in which colour, turning or still.
//
// Pure; any thread.
#pragma once

#include "app/profile_status.h"
#include "ui/theme/colours.h"

#include <chrono>
#include <string_view>

namespace zembrastel::ui {

struct StatusPresentation {
    std::string_view symbol;
    ColourRole colour;
    bool working = false; // the symbol turns

    friend bool operator==(const StatusPresentation&, const StatusPresentation&) = default;
};

[[nodiscard]] StatusPresentation present(const ProfileStatus& status, bool running);

// In degrees clockwise. Follows the clock alone, so that a turn goes on smoothly whatever changes meanwhile.
[[nodiscard]] double turningAngle(std::chrono::milliseconds monotonic);

} // namespace zembrastel::ui
