#include "cli/commands.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_options.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"

#include <algorithm>

namespace zembrastel::cli {
namespace {

struct SetRequest {
    std::string name;
    ProfileOptions options;
    bool askPassword = false;
};

std::optional<std::string> changedPassword(
    const Profile& profile, const SetRequest& request, const CommandContext& context) {
    if (!request.askPassword) return givenPassword(context);
    if (!canAsk()) {
        throw CommandError(
            ExitCode::usage,
            translate("--ask-password needs a terminal; --password-file and --password-command do not."));
    }
    return askPassword(
        translate("FTP password of %1 at %2: ", {oneLine(profile.username), oneLine(profile.host)}), context.interrupt);
}

void requireChange(const SetRequest& request, const GlobalOptions& global) {
    const bool setsPassword = request.askPassword || !global.passwordFile.empty() || !global.passwordCommand.empty();
    if (setsPassword || request.options != ProfileOptions{}) return;
    throw CommandError(ExitCode::usage, translate("Name something to change. profile set --help shows more."));
}

void reportSet(const Profile& before, const AppModel& model, const CommandContext& context) {
    Output& output = context.output;
    const Profile& after = *model.profile(before.id);
    if (output.json()) {
        output.line(asJsonLine("profile", encode(after)));
        return;
    }
    output.line(translate("Changed %1.", {inQuotes(after.name)}));
    if (!isSamePlaceOnServer(before, after) && !model.baseline(after.id).empty()) {
        output.note(
            translate("Nothing has been sent to the new place yet; only later changes will be. To send everything:"));
        output.note(commandLine(context.options, "push --all", unambiguousName(model.profiles(), after)));
    }
    if (after.hasEmptySyncSelection()) {
        output.note(translate("Nothing is selected to sync, so it is not enabled."));
    } else if (after.needsDownload && after.effectiveSyncSelection() != before.effectiveSyncSelection()) {
        output.note(translate("The selection was changed: watch first downloads it from the server."));
    }
}

ExitCode setProfile(const CommandContext& context, const SetRequest& request) {
    requireChange(request, context.options);
    auto session = Session::forChanges(context);
    const Profile before = chooseProfile(session.model().profiles(), request.name);
    const Profile changed = changedProfile(before, request.options);
    requireUnused(changed, session.model().profiles(), &before);
    if (changed.localFolder != before.localFolder) requireSiteFolder(validProfile(changed).localFolder);
    const auto password = changedPassword(changed, request, context);
    std::optional<std::string> unstored;
    try {
        unstored = session.change(changed, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot change the profile %1: %2", {inQuotes(before.name), reasonText(error)}));
    }
    if (unstored && request.options == ProfileOptions{}) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot store the password of %1: %2", {inQuotes(before.name), translateEngineText(*unstored)}));
    }
    reportSet(before, session.model(), context);
    if (unstored) warnNotStored(*unstored, context.output);
    if (request.options.createRemoteFolder) {
        createRemoteFolder(*session.model().profile(before.id), password, context);
    }
    return ExitCode::done;
}

} // namespace

void addProfileSet(Syntax& parent) {
    auto [command, request] =
        parent.command("set", "Change a saved profile; other settings stay unchanged", setProfile);
    command.argument("PROFILE", request.name, "Name or id of the profile");
    addProfileFields(command, request.options);
    command
        .flag("--disabled", request.options.disabled, "Do not watch this profile when watch is called without a name")
        .excludes({command.named("--enabled")});
    command.flag("--ask-password", request.askPassword, "Ask for a new password in the terminal");
    command.footer("--sync and --no-sync replace the previous selection; --sync / is everything. The contents of\n"
                   "a changed selection are downloaded again before anything is uploaded.\n"
                   "--exclude adds to the profile's rules, --exclusions replaces them. A password of\n"
                   "--password-file or --password-command is stored in the desktop's secret store, if there is one.\n\n"
                   "Example:\n"
                   "  zembrastel-cli profile set \"My website\" --host ftp2.example.com --exclude \"*.psd\"");
}

} // namespace zembrastel::cli
