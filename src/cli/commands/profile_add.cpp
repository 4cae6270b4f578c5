#include "cli/commands/profile_add.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_fields.h"
#include "cli/session/profile_saving.h"
#include "cli/terminal/prompt.h"
#include "cli/terminal/standard_input.h"
#include "cli/text/option_texts.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "platform/files.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

struct Request {
    ProfileOptions options;
    std::string from; // a file that holds the profile, in place of the options
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

std::optional<std::string> newPassword(const Profile& profile, bool mayAsk, const Surroundings& around) {
    if (auto given = givenPassword(around)) return given;
    if (!mayAsk || !terminalAnswers()) return std::nullopt;
    auto typed = askPassword(
        "FTP password of " + oneLine(profile.username) + " at " + oneLine(profile.host) + " (empty to store none): ",
        around.interrupt);
    return typed.empty() ? std::nullopt : std::optional(std::move(typed));
}

void report(const Profile& saved, bool passwordStored, const Surroundings& around) {
    Output& output = around.output;
    if (output.json()) {
        output.line(asJsonLine("profile", encode(saved)));
        return;
    }
    output.line("Added " + inQuotes(saved.name) + " (" + saved.id.text() + ").");
    if (saved.hasEmptySyncSelection()) output.note("Nothing is selected to sync, so it is not enabled.");
    if (!passwordStored) {
        output.note(
            "No password was stored. Give one to each command with --password-file FILE or --password-command CMD.");
    }
}

ExitCode addProfile(const Surroundings& around, const Request& request) {
    const Profile asked = request.from.empty() ? profileFrom(request.options) : profileFromFile(request.from);
    EditableState state(around);
    const Profile profile = validProfile(asked);
    requireOwnFolder(profile.localFolder);
    requireNew(profile, state.model().profiles());
    const auto password = newPassword(profile, request.from.empty(), around);
    try {
        state.add(profile, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, "Cannot save the profile " + inQuotes(profile.name) + ": " + sentence(describe(error))
                                  + " It was not added.");
    }
    report(*state.model().profile(profile.id), password.has_value(), around);
    return ExitCode::done;
}

void requireEssentials(const CLI::App& command) {
    std::string missing;
    for (const char* option : {"--name", "--host", "--username", "--local-folder"}) {
        if (command.count(option) == 0) missing += (missing.empty() ? "" : ", ") + std::string(option);
    }
    if (missing.empty()) return;
    throw CommandError(
        ExitCode::usage, "A profile needs " + missing
                             + " as well, or --from FILE with all of it; profile add --help "
                               "tells more.");
}

} // namespace

void addProfileAdd(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("add", "Save a new profile");
    const auto request = std::make_shared<Request>();
    auto& options = request->options;
    std::vector<CLI::Option*> fields = addProfileFields(*command, options);
    fields.push_back(command->add_option("--id", options.id, "The profile's id, when not a new one")
                         ->type_name("UUID")
                         ->check(notEmpty()));
    auto* from =
        command
            ->add_option(
                "--from", request->from,
                "Read the whole profile from a JSON object, as profiles.json\nholds it, in FILE (- is standard input)")
            ->type_name("FILE")
            ->check(notEmpty());
    for (auto* option : fields) from->excludes(option);
    command->footer("The password is stored in the desktop's secret store: that of --password-file or\n"
                    "--password-command, or one that you are asked for in a terminal.\n\n"
                    "Example:\n"
                    "  zembrastel-cli profile add --name \"My website\" --host ftp.example.com \\\n"
                    "    --username web --remote-folder /public_html --local-folder ~/website --enabled");
    command->callback([&chosen, command, request] {
        if (request->from.empty()) requireEssentials(*command);
        chosen = [request](const Surroundings& around) { return addProfile(around, *request); };
    });
}

} // namespace zembrastel::cli
