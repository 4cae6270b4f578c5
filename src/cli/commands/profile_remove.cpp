#include "cli/commands/profile_remove.h"

#include "cli/session/profile_choice.h"
#include "cli/session/profile_saving.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "model/error.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    bool sure = false;
    bool keepPassword = false;
};

constexpr const char* consequence =
    "This removes the saved connection and its Keychain password. Your local and remote files are kept.";
constexpr const char* consequenceWithPassword =
    "This removes the saved connection. Its password, and your local and remote files are kept.";

bool isSure(const Profile& profile, const Request& request, const Surroundings& around) {
    if (request.sure) return true;
    if (!terminalAnswers()) {
        throw CommandError(
            ExitCode::usage, "profile remove asks in a terminal, and there is none. --yes removes without asking.");
    }
    return askWhether(
        "Remove " + inQuotes(profile.name) + "? " + (request.keepPassword ? consequenceWithPassword : consequence),
        around.interrupt);
}

void remove(EditableState& state, const Profile& profile, const Surroundings& around) {
    AppModel& model = state.model();
    model.remove(profile.id);
    const auto interruptible = around.interrupt.during([&state] { state.mainQueue().quit(); });
    const auto isOver = [&] { return model.profile(profile.id) == nullptr || model.alert(); };
    if (!state.mainQueue().runUntil(isOver)) throw Cancelled();
    if (!model.alert()) return;
    const bool gone = model.profile(profile.id) == nullptr;
    throw CommandError(
        ExitCode::failed, "Cannot remove the profile " + inQuotes(profile.name) + ": " + sentence(*model.alert())
                              + (gone ? "" : " Nothing was changed; --keep-password leaves the password where it is."));
}

ExitCode removeProfile(const Surroundings& around, const Request& request) {
    std::function<void(const Uuid&)> removePassword = PasswordStore::remove;
    if (request.keepPassword) removePassword = [](const Uuid&) {};
    EditableState state(around, removePassword);
    const Profile profile = chooseProfile(state.model().profiles(), request.name);
    if (!isSure(profile, request, around)) {
        around.output.note("Nothing was removed.");
        return ExitCode::failed;
    }
    remove(state, profile, around);
    if (around.output.json()) {
        around.output.line(JsonLine("removed").text("profile", profile.name).text("id", profile.id.text()));
    } else {
        around.output.line("Removed " + inQuotes(profile.name) + ". Your local and remote files are kept.");
    }
    return ExitCode::done;
}

} // namespace

void addProfileRemove(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("remove", "Forget a profile and its password; all files are kept");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command->add_flag("--yes", request->sure, "Do not ask");
    command->add_flag(
        "--keep-password", request->keepPassword, "Leave the secret store alone, on a machine without one");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return removeProfile(around, *request); };
    });
}

} // namespace zembrastel::cli
