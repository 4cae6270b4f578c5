#include "cli/commands/status.h"

#include "cli/session/profile_choice.h"
#include "cli/session/running_program.h"
#include "cli/session/session.h"
#include "cli/text/narration.h"
#include "cli/text/presentation.h"
#include "cli/text/status_text.h"

#include <CLI/CLI.hpp>
#include <map>

namespace zembrastel::cli {
namespace {

struct Request {
    std::vector<std::string> names;
    bool follow = false;
};

// Tells the answers as they come: each profile as a whole first, then what is new of it.
class StatusReport {
public:
    explicit StatusReport(Output& where) : output(where) {}

    void take(const ControlAnswer& answer) {
        if (const auto* status = std::get_if<answer::Status>(&answer)) {
            tell(*status);
        } else if (const auto* activity = std::get_if<answer::Activity>(&answer)) {
            tell(*activity);
        }
    }

    [[nodiscard]] bool toldAny() const { return !names.empty(); }

private:
    void tell(const answer::Status& told) {
        const bool isFirst = !names.contains(told.profile);
        names[told.profile] = told.name;
        const auto news = narrations[told.profile].status(told.status);
        if (output.json()) {
            JsonLine object("status");
            begin(object, told.profile, systemClock().now());
            object.flag("enabled", told.enabled).flag("running", told.running);
            object.number("newerOnServer", static_cast<std::uint64_t>(told.newerOnServer));
            object.number("missingOnServer", static_cast<std::uint64_t>(told.missingOnServer));
            addStatus(object, told.status);
            output.line(object);
        } else if (isFirst) {
            for (const auto& line : statusLines(told)) output.line(line);
        } else if (news) {
            tellNews(told.profile, systemClock().now(), *news);
        }
    }

    void tell(const answer::Activity& told) {
        const auto news = narrations[told.profile].activity(told.line);
        if (output.json()) {
            JsonLine object("activity");
            begin(object, told.profile, told.line.date);
            output.line(object.text("text", told.line.text).flag("error", told.line.error));
        } else if (news) {
            tellNews(told.profile, told.line.date, *news);
        }
    }

    void tellNews(const Uuid& profile, SystemTime time, const std::string& news) {
        output.line(clockTime(time) + "  " + oneLine(names[profile]) + "  " + news);
    }

    void begin(JsonLine& object, const Uuid& profile, SystemTime time) {
        object.text("time", universalTime(time)).text("profile", names[profile]).text("id", profile.text());
    }

    Output& output;
    std::map<Uuid, std::string> names;
    std::map<Uuid, Narration> narrations;
};

ControlRequest requestFor(const Surroundings& around, const Request& request) {
    ControlRequest asked{.kind = request.follow ? ControlRequest::Kind::follow : ControlRequest::Kind::status};
    if (request.names.empty()) return asked;
    const SavedState state = loadState(around.options);
    for (const auto& name : request.names) asked.profiles.push_back(chooseProfile(state.profiles, name).id);
    return asked;
}

ExitCode showStatus(const Surroundings& around, const Request& request) {
    const StateStore store = openState(around.options);
    auto program = RunningProgram::find(store);
    const ControlRequest asked = requestFor(around, request);
    if (!program) {
        throw CommandError(
            ExitCode::notRunning,
            "No program keeps the profiles in " + oneLine(store.folder().string()) + " published now.");
    }
    StatusReport report(around.output);
    const auto take = [&](const ControlAnswer& answer) {
        report.take(answer);
        if (around.output.unheard()) program->end();
    };
    if (!request.follow) {
        (void)program->ask(asked, around.interrupt, take);
        if (!report.toldAny()) around.output.note("There are no profiles yet; profile add makes one.");
        return ExitCode::done;
    }
    if (program->follow(asked, around.interrupt, take)) return ExitCode::done;
    throw CommandError(ExitCode::notRunning, "The program that was followed has ended.");
}

} // namespace

void addStatusCommand(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("status", "Show what the running program is at");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->names, "Names or ids of profiles; all of them when left out")->type_name("");
    command->add_flag("--follow", request->follow, "Go on with what happens, until Ctrl-C");
    command->footer("The running program is the window, or watch. Ends with 6 when there is none, or when the one\n"
                    "that is followed ends.");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return showStatus(around, *request); };
    });
}

} // namespace zembrastel::cli
