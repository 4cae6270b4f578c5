#include "cli/commands/profile_set.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_fields.h"
#include "cli/session/profile_saving.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    ProfileOptions options;
    bool askPassword = false;
};

std::optional<std::string> newPassword(const Profile& profile, const Request& request, const Surroundings& around) {
    if (!request.askPassword) return givenPassword(around);
    if (!terminalAnswers()) {
        throw CommandError(
            ExitCode::usage, "--ask-password needs a terminal; --password-file or --password-command do not.");
    }
    return askPassword(
        "FTP password of " + oneLine(profile.username) + " at " + oneLine(profile.host) + ": ", around.interrupt);
}

void requireOwnName(const Profile& changed, const std::vector<Profile>& others) {
    const bool taken = std::ranges::any_of(
        others, [&](const Profile& other) { return other.id != changed.id && other.name == changed.name; });
    if (!taken) return;
    throw CommandError(
        ExitCode::failed,
        "There is a profile " + inQuotes(changed.name) + " already. Nothing was changed; give another --name.");
}

void report(const Profile& before, const AppModel& model, const Surroundings& around) {
    Output& output = around.output;
    const Profile& after = *model.profile(before.id);
    if (output.json()) {
        output.line(asJsonLine("profile", encode(after)));
        return;
    }
    output.line("Changed " + inQuotes(after.name) + ".");
    if (!isSamePlaceOnServer(before, after) && !model.baseline(after.id).empty()) {
        output.note(
            "Nothing has been sent to the new place yet, and only what changes from now on is. To send everything:");
        output.note(commandLine(around.options, "push --all", unambiguousName(model.profiles(), after)));
    }
    if (after.hasEmptySyncSelection()) {
        output.note("Nothing is selected to sync, so it is not enabled.");
    } else if (after.needsDownload && after.effectiveSyncSelection() != before.effectiveSyncSelection()) {
        output.note("What it syncs was changed: watch first downloads that from the server.");
    }
}

ExitCode setProfile(const Surroundings& around, const Request& request) {
    EditableState state(around);
    const Profile before = chooseProfile(state.model().profiles(), request.name);
    const Profile changed = changedProfile(before, request.options);
    requireOwnName(changed, state.model().profiles());
    if (changed.localFolder != before.localFolder) requireOwnFolder(validProfile(changed).localFolder);
    const auto password = newPassword(changed, request, around);
    try {
        state.change(changed, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, "Cannot change the profile " + inQuotes(before.name) + ": " + sentence(describe(error)));
    }
    report(before, state.model(), around);
    return ExitCode::done;
}

} // namespace

void addProfileSet(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("set", "Change a saved profile; what no option names stays");
    const auto request = std::make_shared<Request>();
    command->add_option("PROFILE", request->name, "Name or id of the profile")->required()->type_name("");
    auto fields = addProfileFields(*command, request->options);
    auto* disabled =
        command->add_flag("--disabled", request->options.disabled, "Have watch, when given no name, leave it alone")
            ->excludes(command->get_option("--enabled"));
    auto* ask = command->add_flag("--ask-password", request->askPassword, "Ask for a new password in the terminal");
    fields.insert(fields.end(), {disabled, ask});
    command->footer("--sync and --no-sync replace what was selected before; --sync / is everything. A changed\n"
                    "selection has the selected contents downloaded again before anything is uploaded.\n"
                    "--exclude adds to the profile's rules, --exclusions replaces them. A password of\n"
                    "--password-file or --password-command is stored in the desktop's secret store.\n\n"
                    "Example:\n"
                    "  zembrastel-cli profile set \"My website\" --host ftp2.example.com --exclude \"*.psd\"");
    command->callback([&chosen, request, fields, parentApp = parent.get_parent()] {
        const auto given = [](const CLI::Option* option) { return option->count() > 0; };
        const auto global = [&](const char* name) { return given(parentApp->get_option(name)); };
        if (std::ranges::none_of(fields, given) && !global("--password-file") && !global("--password-command")) {
            throw CommandError(ExitCode::usage, "Say what to change; profile set --help tells more.");
        }
        chosen = [request](const Surroundings& around) { return setProfile(around, *request); };
    });
}

} // namespace zembrastel::cli
