// Creates the Qt application, which needs a display to show windows on.
//
// Main thread, once.
#pragma once

#include <QApplication>

#include <memory>

namespace zembrastel::ui {

// If no window can be opened, ends the program with exit code 1 and one line on standard error. Qt by itself would
// abort, or wait for ever for a display that does not answer; here that wait ends after 20 seconds. Other messages of
// Qt are printed as usual. `argc` and `argv` must outlive the application.
[[nodiscard]] std::unique_ptr<QApplication> startApplication(int& argc, char** argv);

} // namespace zembrastel::ui
