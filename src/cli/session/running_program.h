// The program that holds the state folder, for commands that send it requests.
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
    // Nullopt if none runs, or only a command that holds the folder for a moment and takes no requests.
    [[nodiscard]] static std::optional<RunningProgram> find(const StateStore& store);

    // Calls `ask` with the running program, or `alone` if none runs; `alone` holds the folder. A program that has just
    // started holds the folder before it takes requests: this retries for a second.
    static ExitCode askOrHold(
        const StateStore& store, const std::function<ExitCode(RunningProgram& program)>& ask,
        const std::function<ExitCode()>& alone);

    using Take = std::function<void(const ControlAnswer& answer)>;

    // ask() and follow() wait while the other program works on the request. They end the command if it does not respond
    // at all for ten seconds: it was stopped, or hangs.

    // Passes every answer to `take`. Returns the failure of the request, if any; failures that do not concern the
    // command end it.
    std::optional<answer::Failed> ask(const ControlRequest& request, Interrupt& interrupt, const Take& take);

    // Whether the check after the last decision has found newer files again.
    [[nodiscard]] bool reviewWaits() const { return waits; }

    // The same for a request without end. False if the other program has ended, true after an interrupt or end().
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
