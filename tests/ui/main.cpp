// The tests of the desktop program run without a display, in one application.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    // On the heap, for the test of what happens once it has gone.
    auto* const application = new QApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const int result = RUN_ALL_TESTS();
    delete application;
    return result;
}
