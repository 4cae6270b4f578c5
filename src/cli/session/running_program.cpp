#include "cli/session/running_program.h"

#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/clock.h"

namespace zembrastel::cli {
namespace {

// For an answer, and then as long again for any response.
constexpr std::chrono::seconds responseTime{5};

bool makesChanges(ControlRequest::Kind kind) {
    using Kind = ControlRequest::Kind;
    return kind != Kind::status && kind != Kind::follow && kind != Kind::review;
}

[[noreturn]] void failBecauseEnded() {
    throw CommandError(ExitCode::notRunning, translate("The running program has ended before it answered."));
}

void requireUnderstood(const answer::Failed& failed) {
    using Reason = answer::Failed::Reason;
    if (failed.reason == Reason::notUnderstood)
        throw CommandError(ExitCode::failed, translate("The running Zembrastel is another version; restart it."));
    if (failed.reason == Reason::noProfile) {
        throw CommandError(
            ExitCode::failed, translate("The running program does not know the profile %1.", {failed.text}));
    }
}

} // namespace

std::optional<RunningProgram> RunningProgram::find(const StateStore& store) {
    auto client = ControlClient::connect(store.folder());
    if (!client) return std::nullopt;
    return RunningProgram(*std::move(client), store.folder());
}

ExitCode RunningProgram::askOrHold(
    const StateStore& store, const std::function<ExitCode(RunningProgram& program)>& ask,
    const std::function<ExitCode()>& alone) {
    constexpr int maxTurns = 20;
    for (int turn = 1;; ++turn) {
        if (auto program = find(store)) return ask(*program);
        try {
            return alone();
        } catch (const CommandError& error) {
            if (error.code != ExitCode::stateInUse || turn == maxTurns) throw;
        }
        (void)systemClock().sleep({}, std::chrono::milliseconds(50));
    }
}

// A server check takes time before its answer. A second request shows whether the program responds at all.
void RunningProgram::requireResponse(const ControlRequest& request, Interrupt& interrupt) const {
    auto probe = ControlClient::connect(stateFolder);
    if (!probe) return;
    const auto interruptible = interrupt.during([this, &probe] {
        client.end();
        probe->end();
    });
    const bool responds = probe->ask({.kind = ControlRequest::Kind::status}) && probe->next(responseTime).has_value();
    if (responds || probe->isOver() || interrupt.happened()) return;
    const auto process = client.process();
    throw CommandError(
        ExitCode::notAnswering,
        (process ? translate(
             "The running program (process %1) has not answered for ten seconds: it was stopped, or hangs.",
             {std::to_string(*process)})
                 : translate("The running program has not answered for ten seconds: it was stopped, or hangs."))
            + (makesChanges(request.kind) ? " " + translate("It may still carry the request out later.") : "")
            + (process ? " " + translate("If it was stopped, \"kill -CONT %1\" resumes it.", {std::to_string(*process)})
                       : ""));
}

std::optional<ControlAnswer> RunningProgram::nextAnswer(const ControlRequest& request, Interrupt& interrupt) {
    while (true) {
        if (auto answer = client.next(responseTime)) return answer;
        if (client.isOver()) return std::nullopt;
        requireResponse(request, interrupt);
    }
}

std::optional<answer::Failed> RunningProgram::ask(
    const ControlRequest& request, Interrupt& interrupt, const Take& take) {
    const auto interruptible = interrupt.during([this] { client.end(); });
    if (!client.ask(request)) failBecauseEnded();
    while (const auto answer = nextAnswer(request, interrupt)) {
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
    failBecauseEnded();
}

bool RunningProgram::follow(const ControlRequest& request, Interrupt& interrupt, const Take& take) {
    const auto interruptible = interrupt.during([this] { client.end(); });
    if (!client.ask(request)) return false;
    // After its first answer, a program that is followed may be silent for hours.
    for (auto answer = nextAnswer(request, interrupt); answer; answer = client.next()) {
        if (const auto* failed = std::get_if<answer::Failed>(&*answer)) requireUnderstood(*failed);
        take(*answer);
    }
    return ended || interrupt.happened();
}

void RunningProgram::end() {
    ended = true;
    client.end();
}

} // namespace zembrastel::cli
