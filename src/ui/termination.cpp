#include "ui/termination.h"

#include <cerrno>
#include <csignal>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace zembrastel::ui {

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
