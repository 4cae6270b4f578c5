#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/profile_options.h"
#include "cli/session/session.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"

namespace zembrastel::cli {
namespace {

struct RemoveRequest {
    std::string name;
    bool confirmed = false;
    bool keepPassword = false;
};

constexpr const char* removalText =
    translatable("This removes the saved connection and its Keychain password. Your local and remote files are kept.");
constexpr const char* removalTextWithPassword =
    translatable("This removes the saved connection. Its password, and your local and remote files are kept.");

bool isConfirmed(const Profile& profile, const RemoveRequest& request, const CommandContext& context) {
    if (request.confirmed) return true;
    if (!canAsk()) {
        throw CommandError(
            ExitCode::usage, translate("profile remove needs a terminal to ask in. --yes removes without asking."));
    }
    return askYesOrNo(
        translate("Remove %1?", {inQuotes(profile.name)}) + " "
            + translate(request.keepPassword ? removalTextWithPassword : removalText),
        context.interrupt);
}

void removeAndWait(Session& session, const Profile& profile) {
    AppModel& model = session.model();
    model.remove(profile.id);
    if (!session.runUntil([&] { return model.profile(profile.id) == nullptr || model.alert(); })) throw Cancelled();
    if (!model.alert()) return;
    const bool removed = model.profile(profile.id) == nullptr;
    throw CommandError(
        ExitCode::failed,
        translate("Cannot remove the profile %1: %2", {inQuotes(profile.name), reasonText(*model.alert())})
            + (removed
                   ? ""
                   : " " + translate("Nothing was changed; --keep-password leaves the password in the secret store.")));
}

ExitCode removeProfile(const CommandContext& context, const RemoveRequest& request) {
    std::function<void(const Uuid&)> removePassword = PasswordStore::remove;
    if (request.keepPassword) removePassword = [](const Uuid&) {};
    auto session = Session::forChanges(context, removePassword);
    const Profile profile = chooseProfile(session.model().profiles(), request.name);
    if (!isConfirmed(profile, request, context)) {
        context.output.note(translate("Nothing was removed."));
        return ExitCode::failed;
    }
    removeAndWait(session, profile);
    if (context.output.json()) {
        context.output.line(JsonLine::forProfile("removed", profile));
    } else {
        context.output.line(translate("Removed %1. Your local and remote files are kept.", {inQuotes(profile.name)}));
    }
    return ExitCode::done;
}

} // namespace

void addProfileRemove(Syntax& parent) {
    auto [command, request] =
        parent.command("remove", "Remove a profile and its password; all files are kept", removeProfile);
    command.profileArgument(request.name);
    command.flag("--yes", request.confirmed, "Do not ask");
    command.flag("--keep-password", request.keepPassword, "Do not use the secret store: for a machine without one");
}

} // namespace zembrastel::cli
