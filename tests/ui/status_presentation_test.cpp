#include "screen.h"
#include "ui/main_window/status_symbol.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <gtest/gtest.h>

using namespace zembrastel;
using namespace zembrastel::ui;
using namespace zembrastel::testing;
using namespace std::chrono_literals;

namespace {

ProfileStatus status(Phase phase) {
    ProfileStatus made;
    made.enter(phase, "");
    return made;
}

bool stops(const TurningClock& clock) {
    return waitFor([&clock] { return !clock.running(); });
}

bool runs(const TurningClock& clock) {
    return waitFor([&clock] { return clock.running(); });
}

} // namespace

TEST(StatusPresentation, FailureIsNeverHiddenAndWaitingNeverLooksLikeWork) {
    struct Case {
        ProfileStatus status;
        bool running;
        std::string_view symbol;
        ColourRole colour;
        bool turns;
    };
    const Case cases[] = {
        {ProfileStatus(), false, "pause.fill", &Colours::accent, false},
        {status(Phase::checking), true, "arrow.triangle.2.circlepath", &Colours::accent, true},
        {status(Phase::uploading), true, "arrow.triangle.2.circlepath", &Colours::accent, true},
        {status(Phase::awaitingReview), true, "arrow.triangle.2.circlepath", &Colours::accent, false},
        {status(Phase::watching), true, "arrow.triangle.2.circlepath", &Colours::accent, false},
        // While the check is retried by itself the job runs on.
        {status(Phase::checkFailed), true, "exclamationmark.circle", &Colours::warn, false},
        {status(Phase::stopped), false, "exclamationmark.circle", &Colours::warn, false},
    };
    for (const Case& expected : cases) {
        EXPECT_EQ(
            present(expected.status, expected.running),
            (StatusPresentation{expected.symbol, expected.colour, expected.turns}))
            << expected.status.title();
    }
}

TEST(StatusSymbol, NothingIsRepaintedUnlessSomethingWorksAndIsSeen) {
    theme().apply(Appearance::light);
    StatusSymbol symbol;
    symbol.setStatus(status(Phase::uploading), true);
    QCoreApplication::processEvents();
    EXPECT_FALSE(turningClock().running()) << "before it is shown";

    symbol.show();
    EXPECT_TRUE(runs(turningClock()));
    symbol.setStatus(status(Phase::watching), true);
    EXPECT_TRUE(stops(turningClock())) << "no longer working";

    symbol.setStatus(status(Phase::checking), true);
    EXPECT_TRUE(runs(turningClock()));
    symbol.hide();
    EXPECT_TRUE(stops(turningClock())) << "hidden";

    theme().setAnimated(false);
    symbol.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&symbol, patience));
    EXPECT_FALSE(turningClock().running()) << "the desktop wants no motion";
    theme().setAnimated(true);
    EXPECT_TRUE(runs(turningClock()));
}

TEST(StatusSymbol, ScreenReaderHearsTheStateThatTheColourShows) {
    StatusSymbol symbol;
    EXPECT_EQ(symbol.accessibleName(), "Paused");
    symbol.setStatus(status(Phase::uploading), true);
    EXPECT_EQ(symbol.accessibleName(), "Sync in progress");
    symbol.setStatus(status(Phase::checkFailed), true);
    EXPECT_EQ(symbol.accessibleName(), "Server check needs attention");
}
