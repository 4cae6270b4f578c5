#include "ui/widgets/status_presentation.h"

#include <algorithm>
#include <array>

namespace zembrastel::ui {
namespace {

constexpr std::array<std::string_view, 5> workingTitles{
    "Starting", "Checking server", "Downloading", "Uploading", "Downloading server changes"};

constexpr std::chrono::milliseconds oneTurn{1400};

} // namespace

bool working(const ProfileStatus& status) {
    return status.active && !status.failed && std::ranges::find(workingTitles, status.title) != workingTitles.end();
}

StatusPresentation present(const ProfileStatus& status, bool running) {
    const bool turns = working(status);
    if (status.failed) return {"exclamationmark.circle", &Colours::warn, turns};
    if (!running) return {"pause.fill", &Colours::accent, turns};
    return {"arrow.triangle.2.circlepath", &Colours::accent, turns};
}

double turningAngle(std::chrono::milliseconds monotonic) {
    return static_cast<double>((monotonic % oneTurn).count()) * 360 / static_cast<double>(oneTurn.count());
}

} // namespace zembrastel::ui
