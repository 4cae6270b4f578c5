#include "cli/commands/pausing.h"

#include "cli/session/profile_choice.h"
#include "cli/session/profile_saving.h"
#include "cli/session/running_program.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <set>

namespace zembrastel::cli {
namespace {

struct Request {
    std::vector<std::string> names;
    bool pauses = false;
};

void tell(const Profile& profile, const Request& request, bool changed, bool inProgram, Output& output) {
    if (output.json()) {
        JsonLine object(request.pauses ? "paused" : "resumed");
        object.text("profile", profile.name).text("id", profile.id.text());
        output.line(object.flag("changed", changed).flag("running", inProgram));
        return;
    }
    const std::string name = inQuotes(profile.name);
    if (!changed) {
        output.line(name + (request.pauses ? " is paused already." : " is not paused."));
    } else if (inProgram) {
        output.line((request.pauses ? "Paused " : "Resumed ") + name + ".");
    } else if (request.pauses) {
        output.line("Paused " + name + ": the next program that starts leaves it alone.");
    } else {
        output.line("Resumed " + name + ": no program runs now, and the next that starts keeps it published.");
    }
}

// It was not paused, but waited for its server check to be tried again.
void tellRetried(const Profile& profile, Output& output) {
    if (output.json()) {
        JsonLine object("resumed");
        object.text("profile", profile.name).text("id", profile.id.text());
        output.line(object.flag("changed", true).flag("running", true));
        return;
    }
    output.line("Checking the server of " + inQuotes(profile.name) + " again.");
}

[[noreturn]] void failAt(const Request& request, const std::string& names, const std::string& reason) {
    throw CommandError(
        ExitCode::failed,
        std::string("Cannot ") + (request.pauses ? "pause " : "resume ") + names + ": " + sentence(reason));
}

std::vector<Profile> chosenProfiles(const std::vector<Profile>& profiles, const Request& request) {
    std::vector<Profile> chosen;
    std::set<Uuid> ids;
    for (const auto& name : request.names) {
        const Profile& profile = chooseProfile(profiles, name);
        if (ids.insert(profile.id).second) chosen.push_back(profile);
    }
    return chosen;
}

void changeInProgram(RunningProgram& program, const Surroundings& around, const Request& request) {
    const auto kind = request.pauses ? ControlRequest::Kind::pause : ControlRequest::Kind::resume;
    for (const auto& profile : chosenProfiles(loadState(around.options).profiles, request)) {
        std::optional<answer::Changed> changed;
        const auto failed =
            program.ask({.kind = kind, .profiles = {profile.id}}, around.interrupt, [&](const ControlAnswer& answer) {
                if (const auto* told = std::get_if<answer::Changed>(&answer)) changed = *told;
            });
        if (failed && failed->reason == answer::Failed::Reason::notSaved) {
            failAt(request, inQuotes(profile.name), "It is done, but could not be saved: " + failed->text);
        }
        if (failed) failAt(request, inQuotes(profile.name), failed->text);
        if (changed && changed->retried) {
            tellRetried(profile, around.output);
        } else {
            tell(profile, request, changed.has_value(), true, around.output);
        }
    }
}

void changeSaved(const Surroundings& around, const Request& request) {
    EditableState state(around);
    AppModel& model = state.model();
    for (const auto& profile : chosenProfiles(model.profiles(), request)) {
        try {
            if (request.pauses) {
                model.pause(profile.id);
            } else if (!profile.enabled) {
                model.resume(profile.id);
            }
        } catch (const std::exception& error) {
            failAt(request, inQuotes(profile.name), describe(error));
        }
        if (model.status(profile.id).failed) failAt(request, inQuotes(profile.name), model.status(profile.id).detail);
        tell(profile, request, profile.enabled == request.pauses, false, around.output);
    }
}

ExitCode change(const Surroundings& around, const Request& request) {
    const auto ask = [&](RunningProgram& program) {
        changeInProgram(program, around, request);
        return ExitCode::done;
    };
    const auto alone = [&] {
        changeSaved(around, request);
        return ExitCode::done;
    };
    return RunningProgram::askOrHold(openState(around.options), ask, alone);
}

void add(CLI::App& parent, Command& chosen, bool pauses, const char* name, const char* help, const char* footer) {
    auto* command = parent.add_subcommand(name, help);
    const auto request = std::make_shared<Request>();
    request->pauses = pauses;
    command->add_option("NAME", request->names, "Names or ids of profiles")->required()->type_name("");
    command->footer(footer);
    command->callback(
        [&chosen, request] { chosen = [request](const Surroundings& around) { return change(around, *request); }; });
}

} // namespace

void addPause(CLI::App& parent, Command& chosen) {
    add(parent, chosen, true, "pause", "Stop keeping profiles published, until they are resumed",
        "The running program, window or watch, stops at once; what changes meanwhile is uploaded after\n"
        "resume. Without a running program, the next one leaves the profiles alone.");
}

void addResume(CLI::App& parent, Command& chosen) {
    add(parent, chosen, false, "resume", "Keep paused profiles published again",
        "The running program, window or watch, compares the server first, as at every start. A profile\n"
        "that is not paused has its server check tried again, if that had failed. Without a running\n"
        "program, the next one keeps the profiles published.");
}

} // namespace zembrastel::cli
