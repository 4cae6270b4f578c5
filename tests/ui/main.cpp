// The tests of the desktop program run without a display, in one application.
#include "support/temporary_folder.h"
#include "timed_application.h"
#include "ui/theme/theme.h"
#include "ui/translations.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const zembrastel::testing::TemporaryFolder settings; // not those of the user
    qputenv("XDG_CONFIG_HOME", settings.path().c_str());
    testing::InitGoogleTest(&argc, argv);
    // On the heap, because one test deletes it.
    auto* const application = new zembrastel::testing::TimedApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    zembrastel::ui::installTranslations(*application, QLocale::c());
    zembrastel::ui::theme().apply(zembrastel::ui::Appearance::light); // as the program does before its first window
    holdEventsToTime(*application);
    const int result = RUN_ALL_TESTS();
    delete application;
    return result;
}
