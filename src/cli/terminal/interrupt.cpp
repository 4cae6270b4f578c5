#include "cli/terminal/interrupt.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace zembrastel::cli {
namespace {

// Programs that end others, and closing terminals, send more than one signal at a time.
constexpr std::chrono::seconds graceAfterInterrupt{2};

bool isIgnored(int signalNumber) {
    struct sigaction present {};
    return ::sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

sigset_t endingSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    if (!isIgnored(SIGHUP)) sigaddset(&set, SIGHUP);
    return set;
}

// What would have happened had the signal never been blocked.
void endBy(int signalNumber) {
    struct sigaction byDefault {};
    byDefault.sa_handler = SIG_DFL;
    ::sigaction(signalNumber, &byDefault, nullptr);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, signalNumber);
    ::pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
    ::raise(signalNumber);
}

Descriptor checked(int descriptor) {
    if (descriptor < 0) throw std::system_error(errno, std::system_category(), "Cannot wait for signals");
    return Descriptor(descriptor);
}

} // namespace

Interrupt::Interrupt() : signals(endingSignals()) {
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    arrivals = checked(::signalfd(-1, &signals, SFD_CLOEXEC));
    ending = checked(::eventfd(0, EFD_CLOEXEC));
    thread = std::thread([this] { listen(); });
}

Interrupt::~Interrupt() {
    ::eventfd_write(ending.get(), 1);
    thread.join();
}

void Interrupt::listen() {
    while (true) {
        std::array<pollfd, 2> waiting{
            {{.fd = arrivals.get(), .events = POLLIN, .revents = 0},
             {.fd = ending.get(), .events = POLLIN, .revents = 0}}};
        const int ready = ::poll(waiting.data(), waiting.size(), -1);
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0 || waiting[1].revents != 0) return;
        signalfd_siginfo arrived{};
        if (::read(arrivals.get(), &arrived, sizeof arrived) == sizeof arrived) {
            receive(static_cast<int>(arrived.ssi_signo));
        }
    }
}

void Interrupt::receive(int signalNumber) {
    const std::lock_guard lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (!current || (interrupted && now - firstArrival > graceAfterInterrupt)) endBy(signalNumber);
    if (std::exchange(interrupted, true)) return;
    firstArrival = now;
    current();
}

Interrupt::Scope Interrupt::during(Action action) {
    const std::lock_guard lock(mutex);
    Action replaced = std::exchange(current, std::move(action));
    if (interrupted) current();
    return {*this, std::move(replaced)};
}

Interrupt::Scope::~Scope() {
    const std::lock_guard lock(interrupt.mutex);
    interrupt.current = std::move(before);
}

bool Interrupt::happened() const {
    const std::lock_guard lock(mutex);
    return interrupted;
}

} // namespace zembrastel::cli
