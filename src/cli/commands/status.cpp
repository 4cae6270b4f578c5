#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/running_program.h"
#include "cli/session/session.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/status_text.h"
#include "language/translation.h"

#include <algorithm>
#include <map>
#include <utility>

namespace zembrastel::cli {
namespace {

struct StatusRequest {
    std::vector<std::string> names;
    bool follow = false;
};

// Prints the answers as they come: first the whole status of each profile, then only its changes.
class StatusPrinter {
public:
    StatusPrinter(Output& where, std::vector<Profile> known) : output(where), profiles(std::move(known)) {}

    void take(const ControlAnswer& answer) {
        if (const auto* status = std::get_if<answer::Status>(&answer)) {
            print(*status);
        } else if (const auto* activity = std::get_if<answer::Activity>(&answer)) {
            print(*activity);
        }
    }

    [[nodiscard]] bool printedAny() const { return !names.empty(); }

private:
    void print(const answer::Status& answer) {
        const bool isFirst = !names.contains(answer.profile);
        names[answer.profile] = answer.name;
        const Profile* const profile = find(answer.profile);
        const auto news = narrations[answer.profile].status(answer.status, profile);
        if (output.json()) {
            JsonLine object("status");
            begin(object, answer.profile, systemClock().now());
            object.flag("enabled", answer.enabled).flag("running", answer.running);
            object.number("newerOnServer", static_cast<std::uint64_t>(answer.newerOnServer));
            object.number("missingOnServer", static_cast<std::uint64_t>(answer.missingOnServer));
            if (answer.choice)
                object.object("choice", [&](JsonLine& choice) { addChoiceFields(choice, *answer.choice); });
            addStatusFields(object, answer.status);
            output.line(object);
        } else if (isFirst) {
            for (const auto& line : statusLines(answer, profile)) output.line(line);
        } else {
            printNews(answer.profile, systemClock().now(), news);
        }
    }

    void print(const answer::Activity& answer) {
        const auto news = narrations[answer.profile].activity(answer.line, find(answer.profile));
        if (output.json()) {
            JsonLine object("activity");
            begin(object, answer.profile, answer.line.date);
            output.line(object.text("text", answer.line.text).flag("error", answer.line.error()));
        } else {
            printNews(answer.profile, answer.line.date, news);
        }
    }

    [[nodiscard]] const Profile* find(const Uuid& id) const {
        const auto found = std::ranges::find(profiles, id, &Profile::id);
        return found == profiles.end() ? nullptr : &*found;
    }

    void printNews(const Uuid& profile, SystemTime time, const std::vector<std::string>& news) {
        std::string begin = clockTime(time) + "  " + oneLine(names[profile]) + "  ";
        for (const auto& line : news) output.line(std::exchange(begin, "") + line);
    }

    void begin(JsonLine& object, const Uuid& profile, SystemTime time) {
        object.text("time", universalTime(time)).text("profile", names[profile]).text("id", profile.text());
    }

    Output& output;
    const std::vector<Profile> profiles;
    std::map<Uuid, std::string> names;
    std::map<Uuid, Narration> narrations;
};

ControlRequest statusRequestFor(const CommandContext& context, const StatusRequest& request) {
    ControlRequest asked{.kind = request.follow ? ControlRequest::Kind::follow : ControlRequest::Kind::status};
    if (request.names.empty()) return asked;
    for (const auto& profile : chooseProfiles(StateFolder(context.options).loadProfiles(), request.names)) {
        asked.profiles.push_back(profile.id);
    }
    return asked;
}

ExitCode showStatus(const CommandContext& context, const StatusRequest& request) {
    const StateStore store = StateFolder(context.options).open();
    auto program = RunningProgram::find(store);
    const ControlRequest asked = statusRequestFor(context, request);
    if (!program) {
        throw CommandError(
            ExitCode::notRunning, translate("Zembrastel is not running for %1.", {oneLine(store.folder().string())}));
    }
    StatusPrinter printer(context.output, StateFolder(context.options).loadProfiles());
    const auto take = [&](const ControlAnswer& answer) {
        printer.take(answer);
        if (context.output.readerClosed()) program->end();
    };
    if (!request.follow) {
        (void)program->ask(asked, context.interrupt, take);
        if (!printer.printedAny()) context.output.note(translate("There are no profiles yet; profile add makes one."));
        return ExitCode::done;
    }
    if (program->follow(asked, context.interrupt, take)) return ExitCode::done;
    throw CommandError(ExitCode::notRunning, translate("The followed program has ended."));
}

} // namespace

void addStatus(Syntax& parent) {
    auto [command, request] = parent.command("status", "Show the status of the running program", showStatus);
    command.argument("NAME", request.names, "Names or ids of profiles (default: all)").optional();
    command.flag("--follow", request.follow, "Continue with new events, until Ctrl-C");
    command.footer("The running program is the window, or watch. Ends with 6 if none is running, or when the\n"
                   "one that is followed ends.");
}

} // namespace zembrastel::cli
