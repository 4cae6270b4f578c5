#include "ui/main_window/status_symbol.h"

#include "screen.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

using namespace ui;

ProfileStatus status(Phase phase) {
    ProfileStatus made;
    made.enter(phase, "");
    return made;
}

bool turns(bool wanted) {
    return waitFor([wanted] { return turningClock().running() == wanted; });
}

TEST(StatusSymbol, FailureIsVisibleAndWaitingLooksIdle) {
    struct Case {
        ProfileStatus status;
        bool running;
        StatusPresentation expected;
    };
    const StatusPresentation paused{"pause.fill", &Colours::accent, false};
    const StatusPresentation turning{"arrow.triangle.2.circlepath", &Colours::accent, true};
    const StatusPresentation still{"arrow.triangle.2.circlepath", &Colours::accent, false};
    const StatusPresentation failure{"exclamationmark.circle", &Colours::warn, false};
    for (const Case& each : {
             Case{ProfileStatus(), false, paused},
             {status(Phase::checking), true, turning},
             {status(Phase::uploading), true, turning},
             {status(Phase::awaitingReview), true, still},
             {status(Phase::watching), true, still},
             {status(Phase::checkFailed), true, failure}, // it is retried by itself
             {status(Phase::stopped), false, failure},
         }) {
        EXPECT_EQ(present(each.status, each.running), each.expected) << each.status.title();
    }
}

TEST(StatusSymbol, IdleOrHiddenSymbolCausesNoRepaint) {
    StatusSymbol symbol;
    symbol.setStatus(status(Phase::uploading), true);
    QCoreApplication::processEvents();
    EXPECT_FALSE(turningClock().running()) << "before it is shown";
    symbol.show();
    EXPECT_TRUE(turns(true));
    symbol.setStatus(status(Phase::watching), true);
    EXPECT_TRUE(turns(false)) << "no longer working";
    symbol.setStatus(status(Phase::checking), true);
    EXPECT_TRUE(turns(true));
    symbol.hide();
    EXPECT_TRUE(turns(false)) << "hidden";

    theme().setAnimated(false);
    symbol.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&symbol, patience));
    EXPECT_FALSE(turningClock().running()) << "animations are off";
    theme().setAnimated(true);
    EXPECT_TRUE(turns(true));
}

TEST(StatusSymbol, ScreenReaderLearnsTheState) {
    StatusSymbol symbol;
    EXPECT_EQ(symbol.accessibleName(), "Paused");
    symbol.setStatus(status(Phase::uploading), true);
    EXPECT_EQ(symbol.accessibleName(), "Sync in progress");
    symbol.setStatus(status(Phase::checkFailed), true);
    EXPECT_EQ(symbol.accessibleName(), "Server check needs attention");
}

} // namespace
} // namespace zembrastel::testing
