// The program that holds the state folder, asked by a command that is not to disturb it.
//
// Main thread. Failures are CommandErrors; an interrupt is thrown as Cancelled.
#pragma once

#include "app/control/control_client.h"
#include "cli/command.h"
#include "model/profile.h"
#include "model/state_store.h"

#include <functional>
#include <optional>

namespace zembrastel::cli {

class RunningProgram {
public:
    // Nothing when none runs, or one that nobody can ask: a command that holds the folder for a moment.
    [[nodiscard]] static std::optional<RunningProgram> find(const StateStore& store);

    // Has the one that runs do it, or does it `alone`, holding the folder. A program that has just started holds the
    // folder a moment before it can be asked, and is given a second for that.
    static ExitCode askOrHold(
        const StateStore& store, const std::function<ExitCode(RunningProgram& program)>& ask,
        const std::function<ExitCode()>& alone);

    using Take = std::function<void(const ControlAnswer& answer)>;

    // Both wait as long as the other program is at work on the request, but end the command when it does not respond at
    // all for ten seconds: it was stopped, or hangs.

    // Hands all answers to `take`. The failure that the request ended with, but for those that are no business of the
    // command's: they end it.
    std::optional<answer::Failed> ask(const ControlRequest& request, Interrupt& interrupt, const Take& take);

    // Has the check that followed the decision last asked for found newer files again?
    [[nodiscard]] bool reviewWaits() const { return waits; }

    // The same for a request without end: false when the other program has ended, true when interrupted or ended.
    [[nodiscard]] bool follow(const ControlRequest& request, Interrupt& interrupt, const Take& take);

    // Ends follow(), from within `take`.
    void end();

private:
    RunningProgram(ControlClient connected, std::filesystem::path folder)
        : client(std::move(connected)), stateFolder(std::move(folder)) {}

    [[nodiscard]] std::optional<ControlAnswer> nextAnswer(const ControlRequest& request, Interrupt& interrupt);
    void requireResponse(const ControlRequest& request, Interrupt& interrupt) const;

    ControlClient client;
    std::filesystem::path stateFolder;
    bool ended = false;
    bool waits = false;
};

} // namespace zembrastel::cli
