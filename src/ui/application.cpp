#include "ui/application.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <stop_token>
#include <sys/signalfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zembrastel::ui {
namespace {

// Collects Qt's messages while the application is created. The reason for a failure cannot be distinguished from the
// others.
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

[[noreturn]] void endWithoutWindow(const char* reason) {
    std::fprintf(
        stderr, "zembrastel: Cannot open a window: %s. Start it in a desktop session, or use zembrastel-cli.\n",
        reason);
    std::_Exit(1); // Qt is only half initialised and cannot be torn down in order
}

void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtFatalMsg) {
        said().emplace_back(type, text);
        return;
    }
    endWithoutWindow(qUtf8Printable(whyNoWindow()));
}

// Ends the program unless it is destroyed in time. Qt would wait without end for a display that accepts the connection
// but does not answer.
class Patience {
public:
    Patience() : thread([this](const std::stop_token& stop) { wait(stop); }) {}

private:
    void wait(const std::stop_token& stop) {
        std::unique_lock lock(mutex);
        if (never.wait_for(lock, stop, longest, [] { return false; }) || stop.stop_requested()) return;
        endWithoutWindow("the display has not answered for 20 seconds");
    }

    static constexpr std::chrono::seconds longest{20};
    std::mutex mutex;
    std::condition_variable_any never;
    std::jthread thread;
};

} // namespace

std::unique_ptr<QApplication> startApplication(int& argc, char** argv) {
    const QtMessageHandler usual = qInstallMessageHandler(takeMessage);
    auto patience = std::make_optional<Patience>();
    auto application = std::make_unique<QApplication>(argc, argv);
    patience.reset();
    qInstallMessageHandler(usual);
    for (const auto& [type, text] : std::exchange(said(), {})) usual(type, QMessageLogContext(), text);
    return application;
}

Termination::Termination() {
    sigset_t asked;
    sigemptyset(&asked);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&asked, number);
    ::pthread_sigmask(SIG_BLOCK, &asked, nullptr);
    signals = Descriptor(::signalfd(-1, &asked, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signals) throw std::system_error(errno, std::system_category(), "signalfd");
}

void Termination::onRequest(std::function<void()> end) {
    notifier = std::make_unique<QSocketNotifier>(signals.get(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, [this, end = std::move(end)] {
        signalfd_siginfo arrived{};
        while (::read(signals.get(), &arrived, sizeof arrived) == sizeof arrived) end();
    });
}

} // namespace zembrastel::ui
