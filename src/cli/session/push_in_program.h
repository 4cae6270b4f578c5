// A push that the running program carries out, because it holds the state folder.
//
// Main thread. Failures are CommandErrors; an interrupt is thrown as Cancelled, and the program goes on.
#pragma once

#include "cli/command.h"
#include "cli/session/running_program.h"
#include "model/profile.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace zembrastel::cli {

// The profile is paused in the running program, which therefore pushes nothing of it.
class PausedInProgram : public CommandError {
public:
    explicit PausedInProgram(const Profile& profile);
};

class PushInProgram {
public:
    // The program and the context outlive it.
    PushInProgram(RunningProgram& running, const CommandContext& commandContext, const std::string& name);

    // Everything that has changed, with its progress; returns when the server has it.
    void run(bool downloadsFirst);

    // The program sends the files after its answer.
    void sendAgain(bool all);

    void leaveMissing();

private:
    void ask(ControlRequest::Kind kind, const RunningProgram::Take& take);
    // Returns how many files the answer reports as missing on the server.
    std::uint64_t askForMissing(ControlRequest::Kind kind);

    RunningProgram& program;
    const CommandContext& context;
    const std::vector<Profile> profiles;
    const Profile& profile;
    std::set<std::string, std::less<>> sent; // paths
};

} // namespace zembrastel::cli
