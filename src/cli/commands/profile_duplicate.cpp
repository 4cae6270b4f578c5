#include "cli/commands.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_options.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/import/profile_import.h"

namespace zembrastel::cli {
namespace {

struct DuplicateRequest {
    std::string name;
    std::string newName;
    bool withPassword = false;
};

std::string nameForCopy(const Profile& original, const std::vector<Profile>& profiles) {
    std::vector<std::string> taken;
    for (const auto& profile : profiles) taken.push_back(profile.name);
    return unusedName(original.name + " copy", taken);
}

ExitCode duplicateProfile(const CommandContext& context, const DuplicateRequest& request) {
    auto session = Session::forChanges(context);
    const Profile original = chooseProfile(session.model().profiles(), request.name);
    Profile copy = original;
    copy.id = Uuid::random();
    copy.name = request.newName.empty() ? nameForCopy(original, session.model().profiles()) : request.newName;
    copy.enabled = false;
    copy = validProfile(copy);
    requireUnused(copy, session.model().profiles());
    auto password = givenPassword(context);
    if (!password && request.withPassword) password = passwordFor(original, context);
    std::optional<std::string> unstored;
    try {
        unstored = session.add(copy, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot save the profile %1: %2 It was not added.", {inQuotes(copy.name), reasonText(error)}));
    }
    if (context.output.json()) {
        context.output.line(asJsonLine("profile", encode(copy)));
    } else {
        context.output.line(translate("Added %1 (%2), not enabled.", {inQuotes(copy.name), copy.id.text()}));
        if (!password) context.output.note(translate("It has no password yet; profile set --ask-password stores one."));
    }
    if (unstored) warnNotStored(*unstored, context.output);
    return ExitCode::done;
}

} // namespace

void addProfileDuplicate(Syntax& parent) {
    auto [command, request] =
        parent.command("duplicate", "Save a copy of a profile under another name, not enabled", duplicateProfile);
    command.profileArgument(request.name);
    command.argument("NEW-NAME", request.newName, "The name of the copy (default: NAME copy)").optional().notEmpty();
    command.flag("--with-password", request.withPassword, "Store the original's password for the copy as well");
    command.footer("The copy has no record of the original's uploads and downloads: its first watch or push\n"
                   "uploads every file. Files that are newer on the server wait for a review first.");
}

} // namespace zembrastel::cli
