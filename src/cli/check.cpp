#include "cli/check.h"

#include "cli/presentation.h"
#include "cli/profile_choice.h"
#include "cli/review_text.h"
#include "cli/running_program.h"
#include "cli/server_call.h"
#include "cli/state_folder.h"

#include <CLI/CLI.hpp>

namespace zembrastel {
namespace {

void showAsText(const std::vector<RemoteChange>& changes, const std::string& command, Output& output) {
    if (changes.empty()) {
        output.line("Nothing is newer on the server.");
        return;
    }
    output.line(counted(changes.size(), "file") + " newer on the server:");
    for (const auto& change : changes) output.line("  " + describeChange(change));
    output.note("To decide: " + command);
}

// The server answers now: a running program whose own check had failed need not wait.
void retryInProgram(const Profile& profile, const Surroundings& around) {
    auto program = RunningProgram::find(openState(around.options));
    if (!program) return;
    bool retried = false;
    (void)program->ask(
        {.kind = ControlRequest::Kind::retry, .profiles = {profile.id}}, around.interrupt,
        [&](const ControlAnswer& answer) { retried = retried || std::holds_alternative<answer::Changed>(answer); });
    if (retried) around.output.note("The running program checks the server again.");
}

ExitCode checkServer(const Surroundings& around, const std::string& name) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, name);
    if (profile.needsDownload) {
        throw CommandError(
            ExitCode::failed, inQuotes(profile.name) + " still has its initial download to do; run watch first.");
    }
    std::vector<RemoteChange> changes;
    callServer(
        profile, around, "compare the local folder " + oneLine(profile.localFolder) + " with the server",
        [&](const FTPTransport& server) {
            changes =
                server.newerRemoteFiles(recordOf(state, profile.id, around.options), [](const std::string&) {}).changes;
        });
    retryInProgram(profile, around);
    if (around.output.json()) {
        JsonLine object("review");
        addReview(object, profile, changes, systemClock());
        around.output.line(object);
    } else {
        showAsText(changes, reviewCommand(around.options, unambiguousName(state.profiles, profile)), around.output);
    }
    return changes.empty() ? ExitCode::done : ExitCode::reviewWaiting;
}

} // namespace

void addCheck(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("check", "List the files that are newer on the server; changes nothing");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "Name or id of the profile")->required()->type_name("");
    command->footer("Another program may be running meanwhile. Ends with 3 when there are such files, and with 0\n"
                    "when there are none; review decides what to do with them.");
    command->callback(
        [&chosen, name] { chosen = [name](const Surroundings& around) { return checkServer(around, *name); }; });
}

} // namespace zembrastel
