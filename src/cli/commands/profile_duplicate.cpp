#include "cli/commands/profile_duplicate.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_saving.h"
#include "cli/text/option_texts.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "model/import/profile_import.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    std::string newName;
    bool withPassword = false;
};

std::string nameForCopy(const Profile& original, const std::vector<Profile>& profiles) {
    std::vector<std::string> taken;
    for (const auto& profile : profiles) taken.push_back(profile.name);
    return unusedName(original.name + " copy", taken);
}

ExitCode duplicateProfile(const Surroundings& around, const Request& request) {
    EditableState state(around);
    const Profile original = chooseProfile(state.model().profiles(), request.name);
    Profile copy = original;
    copy.id = Uuid::random();
    copy.name = request.newName.empty() ? nameForCopy(original, state.model().profiles()) : request.newName;
    copy.enabled = false;
    copy = validProfile(copy);
    requireNew(copy, state.model().profiles());
    auto password = givenPassword(around);
    if (!password && request.withPassword) password = passwordFor(original, around);
    try {
        state.add(copy, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            "Cannot save the profile " + inQuotes(copy.name) + ": " + sentence(describe(error)) + " It was not added.");
    }
    if (around.output.json()) {
        around.output.line(asJsonLine("profile", encode(copy)));
    } else {
        around.output.line("Added " + inQuotes(copy.name) + " (" + copy.id.text() + "), not enabled.");
        if (!password) around.output.note("It has no password yet; profile set --ask-password stores one.");
    }
    return ExitCode::done;
}

} // namespace

void addProfileDuplicate(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("duplicate", "Save a copy of a profile under another name, not enabled");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command->add_option("NEW-NAME", request->newName, "What to call the copy (default: NAME copy)")
        ->type_name("")
        ->check(notEmpty());
    command->add_flag("--with-password", request->withPassword, "Store the original's password for the copy as well");
    command->footer("The copy knows of no upload or download of the original: its first watch or push uploads\n"
                    "every file. Files that are newer on the server wait for a review first.");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return duplicateProfile(around, *request); };
    });
}

} // namespace zembrastel::cli
