#include "cli/commands.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_options.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "platform/files.h"

namespace zembrastel::cli {
namespace {

struct AddRequest {
    ProfileOptions options;
    std::string from; // a file with the profile; replaces the options
};

Profile profileFromFile(const std::string& file) {
    const std::string name = file == "-" ? "standard input" : file;
    try {
        const auto json = file == "-" ? readStandardInput() : readFile(file);
        if (!json)
            throw CommandError(ExitCode::failed, "There is no file " + inQuotes(file) + ". Nothing was changed.");
        return decodeProfile(*json);
    } catch (const SyncError& error) {
        throw CommandError(
            ExitCode::failed,
            "Cannot read the profile in " + name + ": " + sentence(error.what()) + " Nothing was changed.");
    } catch (const std::filesystem::filesystem_error& error) {
        throw CommandError(ExitCode::failed, "Cannot read " + describe(error) + ". Nothing was changed.");
    }
}

std::optional<std::string> passwordToStore(const Profile& profile, bool mayAsk, const CommandContext& context) {
    if (auto given = givenPassword(context)) return given;
    if (!mayAsk || !canAsk()) return std::nullopt;
    auto typed = askPassword(
        "FTP password of " + oneLine(profile.username) + " at " + oneLine(profile.host)
            + " (leave empty to store none): ",
        context.interrupt);
    return typed.empty() ? std::nullopt : std::optional(std::move(typed));
}

void reportAdded(const Profile& saved, bool hadPassword, const CommandContext& context) {
    Output& output = context.output;
    if (output.json()) {
        output.line(asJsonLine("profile", encode(saved)));
        return;
    }
    output.line("Added " + inQuotes(saved.name) + " (" + saved.id.text() + ").");
    if (saved.hasEmptySyncSelection()) output.note("Nothing is selected to sync, so it is not enabled.");
    if (!hadPassword) {
        output.note(
            "No password was stored. Give it to each command with --password-file FILE or --password-command CMD.");
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
        ExitCode::usage, "A profile needs " + missing
                             + " as well, or --from FILE with the whole profile. profile add --help shows more.");
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
            ExitCode::failed, "Cannot save the profile " + inQuotes(profile.name) + ": " + sentence(describe(error))
                                  + " It was not added.");
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
        command.option("--id", request.options.id, "UUID", "The profile's id, if not a new one").notEmpty());
    command
        .option(
            "--from", request.from, "FILE",
            "Read the whole profile from a JSON object, as in\nprofiles.json, in FILE (- is standard input)")
        .notEmpty()
        .excludes(fields);
    command.footer("The password is stored in the desktop's secret store: that of --password-file or\n"
                   "--password-command, or the one that you type in the terminal. Without a secret store the\n"
                   "profile is saved alone.\n\n"
                   "Example:\n"
                   "  zembrastel-cli profile add --name \"My website\" --host ftp.example.com \\\n"
                   "    --username web --remote-folder /public_html --local-folder ~/website --enabled");
}

} // namespace zembrastel::cli
