#include "cli/commands/forget_files.h"

#include "cli/session/profile_choice.h"
#include "cli/session/profile_saving.h"
#include "cli/session/running_program.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "model/scan.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

void report(const Profile& profile, bool forgotten, Output& output) {
    if (output.json()) {
        JsonLine object("forgotten");
        object.text("profile", profile.name).text("id", profile.id.text());
        output.line(object.flag("changed", forgotten));
    } else if (forgotten) {
        output.line(
            "Forgot the missing files of " + inQuotes(profile.name)
            + "; on the server they stay. Files that come back to the local folder are uploaded.");
    } else {
        output.line("Nothing to forget: no files are missing that " + inQuotes(profile.name) + " waits for.");
    }
}

void forgetInProgram(RunningProgram& program, const Surroundings& around, const std::string& name) {
    const auto profiles = loadProfiles(around.options);
    const Profile& profile = chooseProfile(profiles, name);
    bool forgotten = false;
    const ControlRequest request{.kind = ControlRequest::Kind::forgetFiles, .profiles = {profile.id}};
    const auto failed = program.ask(request, around.interrupt, [&forgotten](const ControlAnswer& answer) {
        forgotten = forgotten || std::holds_alternative<answer::Changed>(answer);
    });
    if (failed) {
        throw CommandError(
            ExitCode::failed,
            "Cannot forget the missing files of " + inQuotes(profile.name) + ": " + sentence(failed->text));
    }
    report(profile, forgotten, around.output);
}

void forgetSaved(const Surroundings& around, const std::string& name) {
    EditableState state(around);
    const Profile profile = chooseProfile(state.model().profiles(), name);
    try {
        const bool missing = !state.model().baseline(profile.id).empty() && scan(profile).empty();
        if (missing) state.model().save(profile, std::nullopt, FileMap());
        report(profile, missing, around.output);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            "Cannot forget the missing files of " + inQuotes(profile.name) + ": " + sentence(describe(error)));
    }
}

ExitCode forgetFiles(const Surroundings& around, const std::string& name) {
    const auto ask = [&](RunningProgram& program) {
        forgetInProgram(program, around, name);
        return ExitCode::done;
    };
    const auto alone = [&] {
        forgetSaved(around, name);
        return ExitCode::done;
    };
    return RunningProgram::askOrHold(openState(around.options), ask, alone);
}

} // namespace

void addForgetFiles(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("forget-files", "Go on with a local folder that you emptied");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "Name or id of the profile")->required()->type_name("");
    command->footer(
        "When the local folder is empty at the start of watch or push, its disk may only be missing: nothing\n"
        "is uploaded, and what was uploaded before stays recorded. This command says that you deleted the\n"
        "files: they are no longer recorded. On the server they stay. It changes nothing while there are\n"
        "files in the folder.");
    command->callback(
        [&chosen, name] { chosen = [name](const Surroundings& around) { return forgetFiles(around, *name); }; });
}

} // namespace zembrastel::cli
