#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/running_program.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/scan.h"

namespace zembrastel::cli {
namespace {

struct ForgetRequest {
    std::string name;
};

void reportForgotten(const Profile& profile, bool forgotten, Output& output) {
    if (output.json()) {
        auto object = JsonLine::forProfile("forgotten", profile);
        output.line(object.flag("changed", forgotten));
    } else if (forgotten) {
        output.line(translate(
            "Forgot the missing files of %1; they stay on the server. Files that come back to the local folder are "
            "uploaded.",
            {inQuotes(profile.name)}));
    } else {
        output.line(translate("Nothing to forget: %1 does not wait for missing files.", {inQuotes(profile.name)}));
    }
}

void forgetInProgram(RunningProgram& program, const CommandContext& context, const std::string& name) {
    const auto profiles = StateFolder(context.options).loadProfiles();
    const Profile& profile = chooseProfile(profiles, name);
    bool forgotten = false;
    const ControlRequest request{.kind = ControlRequest::Kind::forgetFiles, .profiles = {profile.id}};
    const auto failed = program.ask(request, context.interrupt, [&forgotten](const ControlAnswer& answer) {
        forgotten = forgotten || std::holds_alternative<answer::Changed>(answer);
    });
    if (failed) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot forget the missing files of %1: %2", {inQuotes(profile.name), reasonText(failed->text)}));
    }
    reportForgotten(profile, forgotten, context.output);
}

void forgetSaved(const CommandContext& context, const std::string& name) {
    auto session = Session::forChanges(context);
    const Profile profile = chooseProfile(session.model().profiles(), name);
    try {
        const bool missing = !session.model().baseline(profile.id).empty() && scan(profile).empty();
        if (missing) session.model().save(profile, std::nullopt, FileMap());
        reportForgotten(profile, missing, context.output);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot forget the missing files of %1: %2", {inQuotes(profile.name), reasonText(error)}));
    }
}

ExitCode forgetFiles(const CommandContext& context, const ForgetRequest& request) {
    const auto ask = [&](RunningProgram& program) {
        forgetInProgram(program, context, request.name);
        return ExitCode::done;
    };
    const auto alone = [&] {
        forgetSaved(context, request.name);
        return ExitCode::done;
    };
    return RunningProgram::askOrHold(StateFolder(context.options).open(), ask, alone);
}

} // namespace

void addForgetFiles(Syntax& parent) {
    auto [command, request] =
        parent.command("forget-files", "Continue with a local folder that you emptied", forgetFiles);
    command.profileArgument(request.name);
    command.footer(
        "If the local folder is empty at the start of watch or push, its disk may not be mounted: nothing is\n"
        "uploaded, and the record of uploaded files is kept. This command confirms that you deleted the files:\n"
        "they are no longer recorded. They stay on the server. It changes nothing while there are files in the\n"
        "folder.");
}

} // namespace zembrastel::cli
