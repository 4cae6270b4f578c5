#include "cli/terminal/printer.h"

#include <chrono>
#include <csignal>
#include <utility>

namespace zembrastel::cli {
namespace {

constexpr std::chrono::milliseconds graceAtEnd{500};
constexpr std::chrono::milliseconds signalInterval{10};

// Interrupts a system call that blocks. By default this signal is ignored, so no other code depends on it.
constexpr int interruptingSignal = SIGURG;

void makeSignalInterrupt() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(interruptingSignal, &action, nullptr);
}

} // namespace

Printer::Printer(std::size_t roomInBytes, Effects chosen) : room(roomInBytes), effects(std::move(chosen)) {
    makeSignalInterrupt();
    thread = std::thread([this] { run(); });
}

void Printer::end() {
    if (!thread.joinable()) return;
    {
        std::unique_lock lock(mutex);
        ending = true;
        changed.notify_all();
        const auto isOver = [this] { return ended; };
        givingUp = !changed.wait_for(lock, graceAtEnd, isOver);
        // Repeated, because a signal may come just before the call that blocks.
        while (!changed.wait_for(lock, signalInterval, isOver)) {
            ::pthread_kill(thread.native_handle(), interruptingSignal);
        }
    }
    thread.join();
}

void Printer::print(Line line) {
    const std::lock_guard lock(mutex);
    if (unprinted > 0 || (!lines.empty() && bytes + line.text.size() > room)) {
        ++unprinted;
        unprintedStream = line.stream;
        return;
    }
    bytes += line.text.size();
    lines.push_back(std::move(line));
    changed.notify_all();
}

void Printer::showLive(Live shown) {
    const std::lock_guard lock(mutex);
    live = std::move(shown);
    changed.notify_all();
}

void Printer::finish() {
    std::unique_lock lock(mutex);
    ending = true;
    changed.notify_all();
    changed.wait(lock, [this] { return ended; });
}

// The next line to print. The count of the dropped lines comes in their place.
std::optional<Printer::Line> Printer::next() {
    if (!lines.empty()) {
        Line line = std::move(lines.front());
        lines.pop_front();
        bytes -= line.text.size();
        return line;
    }
    if (unprinted == 0) return std::nullopt;
    return Line{.stream = unprintedStream, .text = effects.unprinted(std::exchange(unprinted, 0))};
}

void Printer::run() {
    std::unique_lock lock(mutex);
    while (!givingUp) {
        if (const auto line = next()) {
            lock.unlock();
            effects.print(*line);
            lock.lock();
        } else if (const auto shown = std::exchange(live, std::nullopt)) {
            lock.unlock();
            effects.showLive(*shown);
            lock.lock();
        } else if (ending) {
            break;
        } else {
            changed.wait(lock);
        }
    }
    ended = true;
    changed.notify_all();
}

} // namespace zembrastel::cli
