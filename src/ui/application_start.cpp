#include "ui/application_start.h"

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace zembrastel {
namespace {

// What Qt said while the application was made. Nothing else can be told apart from why it failed.
std::vector<std::pair<QtMsgType, QString>>& said() {
    static std::vector<std::pair<QtMsgType, QString>> messages;
    return messages;
}

QString whyNoWindow() {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return QStringLiteral("no display is named by DISPLAY or WAYLAND_DISPLAY");
    }
    return said().empty() ? QStringLiteral("the display cannot be used")
                          : said().front().second.section(u'\n', 0, 0).trimmed();
}

void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtFatalMsg) {
        said().emplace_back(type, text);
        return;
    }
    std::fprintf(
        stderr, "zembrastel: Cannot open a window: %s. Start it in a desktop session, or use zembrastel-cli.\n",
        qUtf8Printable(whyNoWindow()));
    std::_Exit(1); // Qt is half made: nothing of it can be taken down in order
}

} // namespace

std::unique_ptr<QApplication> startApplication(int& argc, char** argv) {
    const QtMessageHandler usual = qInstallMessageHandler(takeMessage);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    for (const auto& [type, text] : std::exchange(said(), {})) usual(type, QMessageLogContext(), text);
    return application;
}

} // namespace zembrastel
