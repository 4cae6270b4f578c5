#include "cli/commands/check.h"

#include "cli/session/profile_choice.h"
#include "cli/session/running_program.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

void ignore(const std::string&) {}

void showAsText(const ServerCheck& check, const std::string& command, Output& output) {
    if (check.changes.empty()) {
        output.line("Nothing is newer on the server.");
        return;
    }
    output.line(counted(check.changes.size(), "file") + " newer on the server:");
    for (const auto& change : check.changes) {
        output.line("  " + describeChange(change) + describeSizes(change, check.seen));
    }
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
    ServerCheck found;
    callServer(
        profile, around, "compare the local folder " + oneLine(profile.localFolder) + " with the server",
        [&](const FTPTransport& server) {
            found = server.newerRemoteFiles(recordOf(state, profile.id, around.options), ignore);
        });
    retryInProgram(profile, around);
    const std::string unambiguous = unambiguousName(state.profiles, profile);
    if (around.output.json()) {
        JsonLine object("review");
        addReview(object, profile, found.changes, systemClock(), found.seen);
        around.output.line(object);
    } else {
        showAsText(found, reviewCommand(around.options, unambiguous), around.output);
    }
    tellMissing(profile, found.missing, around.output);
    if (!found.missing.empty()) around.output.note(sendMissingHint(around.options, found.missing.size(), unambiguous));
    if (!found.changes.empty()) return ExitCode::reviewWaiting;
    return found.missing.empty() ? ExitCode::done : ExitCode::failed;
}

} // namespace

void addCheck(CLI::App& parent, Command& chosen) {
    auto* command =
        parent.add_subcommand("check", "List the files that are newer or missing on the server; changes nothing");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "Name or id of the profile")->required()->type_name("");
    command->footer("Another program may be running meanwhile. Ends with 3 if files are newer on the server or differ\n"
                    "there in size: review decides about them. Ends with 1 if uploaded files are missing there and\n"
                    "none is newer: push --missing sends them again. Otherwise ends with 0.");
    command->callback(
        [&chosen, name] { chosen = [name](const Surroundings& around) { return checkServer(around, *name); }; });
}

} // namespace zembrastel::cli
