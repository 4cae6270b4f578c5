#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/running_program.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/translation.h"

namespace zembrastel::cli {
namespace {

struct CheckRequest {
    std::string name;
};

void printCheck(const ServerCheck& check, const std::string& command, Output& output) {
    if (check.changes.empty()) {
        output.line(translate("Nothing is newer on the server."));
        return;
    }
    output.line(translatePlural("%n file newer on the server:", "%n files newer on the server:", check.changes.size()));
    for (const auto& change : check.changes) {
        output.line("  " + describeChange(change) + describeSizes(change, check.seen));
    }
    output.note(translate("To decide: %1", {command}));
}

// The server answers now, so a running program whose own check has failed tries it again at once.
void retryInProgram(const Profile& profile, const CommandContext& context) {
    auto program = RunningProgram::find(StateFolder(context.options).open());
    if (!program) return;
    bool retried = false;
    (void)program->ask(
        {.kind = ControlRequest::Kind::retry, .profiles = {profile.id}}, context.interrupt,
        [&](const ControlAnswer& answer) { retried = retried || std::holds_alternative<answer::Changed>(answer); });
    if (retried) context.output.note(translate("The running program checks the server again."));
}

ExitCode checkServer(const CommandContext& context, const CheckRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    requireDownloaded(profile);
    ServerCheck found;
    callServer(profile, context, comparisonAim(profile), [&](const FTPTransport& server) {
        found = server.newerRemoteFiles(
            StateFolder(context.options).recordOf(state, profile.id), [](const std::string&) {});
    });
    retryInProgram(profile, context);
    if (found.first) printChoice(choiceOf(*found.first, false), profile, state.profiles, context);
    const std::string unambiguous = unambiguousName(state.profiles, profile);
    if (context.output.json()) {
        JsonLine object("review");
        addReviewFields(object, profile, found.changes, systemClock(), found.seen);
        context.output.line(object);
    } else if (!found.first || !found.changes.empty()) {
        printCheck(found, reviewCommand(context.options, unambiguous), context.output);
    }
    printMissing(profile, found.missing, context.output);
    if (!found.missing.empty())
        context.output.note(sendMissingHint(context.options, found.missing.size(), unambiguous));
    if (found.first || !found.changes.empty()) return ExitCode::reviewWaiting;
    return found.missing.empty() ? ExitCode::done : ExitCode::failed;
}

} // namespace

void addCheck(Syntax& parent) {
    auto [command, request] =
        parent.command("check", "List the files that are newer or missing on the server; changes nothing", checkServer);
    command.profileArgument(request.name);
    command.footer("Works while another program is running. Ends with 3 if files are newer on the server or differ\n"
                   "there in size (review decides about them), or if the site is there already before the first\n"
                   "upload (see adopt). Otherwise ends with 1 if uploaded files are missing there (push --missing\n"
                   "sends them again), and with 0 if none are.");
}

} // namespace zembrastel::cli
