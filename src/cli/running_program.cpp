#include "cli/running_program.h"

#include "cli/presentation.h"
#include "model/error.h"
#include "platform/clock.h"

namespace zembrastel {
namespace {

[[noreturn]] void tellGone() {
    throw CommandError(ExitCode::notRunning, "The running program has ended before it answered.");
}

void requireUnderstood(const answer::Failed& failed) {
    using Reason = answer::Failed::Reason;
    if (failed.reason == Reason::notUnderstood) throw CommandError(ExitCode::failed, sentence(failed.text));
    if (failed.reason == Reason::noProfile) {
        throw CommandError(ExitCode::failed, "The running program does not know the profile " + failed.text + ".");
    }
}

} // namespace

std::optional<RunningProgram> RunningProgram::find(const StateStore& store) {
    auto client = ControlClient::connect(store.folder());
    if (!client) return std::nullopt;
    return RunningProgram(*std::move(client));
}

ExitCode RunningProgram::askOrHold(
    const StateStore& store, const std::function<ExitCode(RunningProgram& program)>& ask,
    const std::function<ExitCode()>& alone) {
    constexpr int mostTurns = 20;
    for (int turn = 1;; ++turn) {
        if (auto program = find(store)) return ask(*program);
        try {
            return alone();
        } catch (const CommandError& error) {
            if (error.code != ExitCode::stateInUse || turn == mostTurns) throw;
        }
        (void)systemClock().sleep({}, std::chrono::milliseconds(50));
    }
}

std::optional<answer::Failed> RunningProgram::ask(
    const ControlRequest& request, Interrupt& interrupt, const Take& take) {
    const auto interruptible = interrupt.during([this] { client.end(); });
    if (!client.ask(request)) tellGone();
    while (const auto answer = client.next()) {
        if (const auto* done = std::get_if<answer::Done>(&*answer)) {
            waits = done->reviewWaits;
            return std::nullopt;
        }
        if (const auto* failed = std::get_if<answer::Failed>(&*answer)) {
            requireUnderstood(*failed);
            return *failed;
        }
        take(*answer);
    }
    if (interrupt.happened()) throw Cancelled();
    tellGone();
}

bool RunningProgram::follow(const ControlRequest& request, Interrupt& interrupt, const Take& take) {
    const auto interruptible = interrupt.during([this] { client.end(); });
    if (!client.ask(request)) return false;
    while (const auto answer = client.next()) {
        if (const auto* failed = std::get_if<answer::Failed>(&*answer)) requireUnderstood(*failed);
        take(*answer);
    }
    return ended || interrupt.happened();
}

void RunningProgram::end() {
    ended = true;
    client.end();
}

} // namespace zembrastel
