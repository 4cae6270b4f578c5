#include "cli/commands.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_options.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/files.h"

namespace zembrastel::cli {
namespace {

struct AddRequest {
    ProfileOptions options;
    std::string from; // a file with the profile; replaces the options
};

Profile profileFromFile(const std::string& file) {
    const std::string name = file == "-" ? translate("the standard input") : file;
    try {
        const auto json = file == "-" ? readStandardInput() : readFile(file);
        if (!json)
            throw CommandError(
                ExitCode::failed, translate("There is no file %1. Nothing was changed.", {inQuotes(file)}));
        return decodeProfile(*json);
    } catch (const SyncError& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot read the profile in %1: %2 Nothing was changed.", {name, reasonText(error)}));
    } catch (const std::filesystem::filesystem_error& error) {
        throw CommandError(ExitCode::failed, translate("Cannot read %1 Nothing was changed.", {reasonText(error)}));
    }
}

std::optional<std::string> passwordToStore(const Profile& profile, bool mayAsk, const CommandContext& context) {
    if (auto given = givenPassword(context)) return given;
    if (!mayAsk || !canAsk()) return std::nullopt;
    auto typed = askPassword(
        translate(
            "FTP password of %1 at %2 (leave empty to store none): ",
            {oneLine(profile.username), oneLine(profile.host)}),
        context.interrupt);
    return typed.empty() ? std::nullopt : std::optional(std::move(typed));
}

void reportAdded(const Profile& saved, bool hadPassword, const CommandContext& context) {
    Output& output = context.output;
    if (output.json()) {
        output.line(asJsonLine("profile", encode(saved)));
        return;
    }
    output.line(translate("Added %1 (%2).", {inQuotes(saved.name), saved.id.text()}));
    if (saved.hasEmptySyncSelection()) output.note(translate("Nothing is selected to sync, so it is not enabled."));
    if (!hadPassword) {
        output.note(translate(
            "No password was stored. Give it to each command with --password-file FILE or --password-command CMD."));
    }
}

void requireEssentials(const ProfileOptions& options) {
    std::string missing;
    const auto require = [&missing](const char* option, const std::optional<std::string>& value) {
        if (!value) missing += (missing.empty() ? "" : ", ") + std::string(option);
    };
    require("--name", options.name);
    require("--host", options.host);
    require("--username", options.username);
    require("--local-folder", options.localFolder);
    if (missing.empty()) return;
    throw CommandError(
        ExitCode::usage, translate(
                             "A profile needs %1 as well, or --from FILE with the whole profile. profile add --help "
                             "shows more.",
                             {missing}));
}

ExitCode addProfile(const CommandContext& context, const AddRequest& request) {
    if (request.from.empty()) requireEssentials(request.options);
    const Profile asked = request.from.empty() ? profileFrom(request.options) : profileFromFile(request.from);
    auto session = Session::forChanges(context);
    const Profile profile = validProfile(asked);
    requireSiteFolder(profile.localFolder);
    requireUnused(profile, session.model().profiles());
    const auto password = passwordToStore(profile, request.from.empty(), context);
    std::optional<std::string> unstored;
    try {
        unstored = session.add(profile, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot save the profile %1: %2 It was not added.", {inQuotes(profile.name), reasonText(error)}));
    }
    const Profile& saved = *session.model().profile(profile.id);
    reportAdded(saved, password.has_value(), context);
    if (unstored) warnNotStored(*unstored, context.output);
    if (request.options.createRemoteFolder) createRemoteFolder(saved, password, context);
    return ExitCode::done;
}

} // namespace

void addProfileAdd(Syntax& parent) {
    auto [command, request] = parent.command("add", "Save a new profile", addProfile);
    auto fields = addProfileFields(command, request.options);
    fields.push_back(
        command.option("--id", request.options.id, "UUID", "The profile's id, in place of a new one").notEmpty());
    command
        .option(
            "--from", request.from, "FILE",
            "Read the whole profile from a JSON object, as in\nprofiles.json, in FILE (- is standard input)")
        .notEmpty()
        .excludes(fields);
    command.footer("The password is stored in the desktop's secret store: that of --password-file or\n"
                   "--password-command, or the one that you type in the terminal. Without a secret store only\n"
                   "the profile is saved.\n\n"
                   "Example:\n"
                   "  zembrastel-cli profile add --name \"My website\" --host ftp.example.com \\\n"
                   "    --username web --remote-folder /public_html --local-folder ~/website --enabled");
}

} // namespace zembrastel::cli
