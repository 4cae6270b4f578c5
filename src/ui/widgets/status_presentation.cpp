#include "ui/widgets/status_presentation.h"

namespace zembrastel::ui {
namespace {

constexpr std::chrono::milliseconds oneTurn{1400};

} // namespace

StatusPresentation present(const ProfileStatus& status, bool running) {
    const bool turns = status.working();
    if (status.failed()) return {"exclamationmark.circle", &Colours::warn, turns};
    if (!running) return {"pause.fill", &Colours::accent, turns};
    return {"arrow.triangle.2.circlepath", &Colours::accent, turns};
}

double turningAngle(std::chrono::milliseconds monotonic) {
    return static_cast<double>((monotonic % oneTurn).count()) * 360 / static_cast<double>(oneTurn.count());
}

} // namespace zembrastel::ui
