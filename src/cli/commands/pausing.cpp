#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/running_program.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"

#include <set>

namespace zembrastel::cli {
namespace {

struct PauseRequest {
    std::vector<std::string> names;
};

struct ResumeRequest {
    std::vector<std::string> names;
};

// The request of either command.
struct PauseOrResume {
    std::vector<std::string> names;
    bool pauses = false;
};

void reportChange(const Profile& profile, const PauseOrResume& request, bool changed, bool inProgram, Output& output) {
    if (output.json()) {
        auto object = JsonLine::forProfile(request.pauses ? "paused" : "resumed", profile);
        output.line(object.flag("changed", changed).flag("running", inProgram));
        return;
    }
    const std::string name = inQuotes(profile.name);
    if (!changed) {
        output.line(
            request.pauses ? translate("%1 is paused already.", {name}) : translate("%1 is not paused.", {name}));
    } else if (inProgram) {
        output.line(request.pauses ? translate("Paused %1.", {name}) : translate("Resumed %1.", {name}));
    } else if (request.pauses) {
        output.line(translate("Paused %1: the next start of Zembrastel does not watch it.", {name}));
    } else {
        output.line(
            translate("Resumed %1: Zembrastel is not running; its next start keeps the profile published.", {name}));
    }
}

// The profile was not paused: its server check had failed and is tried again.
void reportRetry(const Profile& profile, Output& output) {
    if (output.json()) {
        auto object = JsonLine::forProfile("resumed", profile);
        output.line(object.flag("changed", true).flag("running", true));
        return;
    }
    output.line(translate("Checking the server of %1 again.", {inQuotes(profile.name)}));
}

[[noreturn]] void failChange(const PauseOrResume& request, const std::string& names, const std::string& reason) {
    throw CommandError(
        ExitCode::failed, request.pauses ? translate("Cannot pause %1: %2", {names, reason})
                                         : translate("Cannot resume %1: %2", {names, reason}));
}

void pauseOrResumeInProgram(RunningProgram& program, const CommandContext& context, const PauseOrResume& request) {
    const auto kind = request.pauses ? ControlRequest::Kind::pause : ControlRequest::Kind::resume;
    for (const auto& profile : chooseProfiles(StateFolder(context.options).loadProfiles(), request.names)) {
        std::optional<answer::Changed> changed;
        const auto failed =
            program.ask({.kind = kind, .profiles = {profile.id}}, context.interrupt, [&](const ControlAnswer& answer) {
                if (const auto* change = std::get_if<answer::Changed>(&answer)) changed = *change;
            });
        if (failed && failed->reason == answer::Failed::Reason::notSaved) {
            failChange(
                request, inQuotes(profile.name),
                translate("The change took effect, but could not be saved: %1", {reasonText(failed->text)}));
        }
        if (failed) failChange(request, inQuotes(profile.name), reasonText(failed->text));
        if (changed && changed->retried) {
            reportRetry(profile, context.output);
        } else {
            reportChange(profile, request, changed.has_value(), true, context.output);
        }
    }
}

void pauseOrResumeSaved(const CommandContext& context, const PauseOrResume& request) {
    auto session = Session::forChanges(context);
    AppModel& model = session.model();
    for (const auto& profile : chooseProfiles(model.profiles(), request.names)) {
        try {
            if (request.pauses) {
                model.pause(profile.id);
            } else if (!profile.enabled) {
                model.resume(profile.id);
            }
        } catch (const std::exception& error) {
            failChange(request, inQuotes(profile.name), reasonText(error));
        }
        if (model.status(profile.id).failed())
            failChange(request, inQuotes(profile.name), reasonText(model.status(profile.id).detail));
        reportChange(profile, request, profile.enabled == request.pauses, false, context.output);
    }
}

ExitCode pauseOrResume(const CommandContext& context, const PauseOrResume& request) {
    const auto ask = [&](RunningProgram& program) {
        pauseOrResumeInProgram(program, context, request);
        return ExitCode::done;
    };
    const auto alone = [&] {
        pauseOrResumeSaved(context, request);
        return ExitCode::done;
    };
    return RunningProgram::askOrHold(StateFolder(context.options).open(), ask, alone);
}

ExitCode pauseProfiles(const CommandContext& context, const PauseRequest& request) {
    return pauseOrResume(context, {.names = request.names, .pauses = true});
}

ExitCode resumeProfiles(const CommandContext& context, const ResumeRequest& request) {
    return pauseOrResume(context, {.names = request.names, .pauses = false});
}

} // namespace

void addPause(Syntax& parent) {
    auto [command, request] = parent.command("pause", "Stop publishing profiles until they are resumed", pauseProfiles);
    command.argument("NAME", request.names, "Names or ids of profiles");
    command.footer("The running program, window or watch, stops at once; changes made meanwhile are uploaded after\n"
                   "resume. Without a running program, the next one does not start the profiles.");
}

void addResume(Syntax& parent) {
    auto [command, request] = parent.command("resume", "Publish paused profiles again", resumeProfiles);
    command.argument("NAME", request.names, "Names or ids of profiles");
    command.footer("The running program, window or watch, compares the server first, as at every start. If the\n"
                   "server check of a profile has failed, resume retries it. Without a running program, the\n"
                   "next one publishes the profiles.");
}

} // namespace zembrastel::cli
