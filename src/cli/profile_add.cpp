#include "cli/profile_add.h"

#include "app/main_queue.h"
#include "cli/option_texts.h"
#include "cli/password_source.h"
#include "cli/presentation.h"
#include "cli/profile_options.h"
#include "cli/state_folder.h"
#include "model/error.h"
#include "platform/files.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace zembrastel {
namespace {

struct Request {
    ProfileOptions options;
    std::string from; // a file that holds the profile, in place of the options
};

std::string readAll(int descriptor) {
    std::string bytes;
    while (true) {
        std::array<char, 1 << 16> buffer{};
        const ssize_t size = ::read(descriptor, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throwFileError("read", "standard input");
        if (size == 0) return bytes;
        bytes.append(buffer.data(), static_cast<std::size_t>(size));
    }
}

Profile profileFromFile(const std::string& file) {
    const std::string name = file == "-" ? "standard input" : file;
    try {
        const auto json = file == "-" ? readAll(STDIN_FILENO) : readFile(file);
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

Profile validated(const Profile& profile) {
    try {
        return profile.validated();
    } catch (const SyncError& error) {
        throw CommandError(ExitCode::failed, sentence(error.what()) + " Nothing was changed.");
    }
}

void requireNew(const Profile& profile, const std::vector<Profile>& others) {
    for (const auto& other : others) {
        if (other.id == profile.id) {
            throw CommandError(
                ExitCode::failed,
                "The id " + profile.id.text() + " is that of " + inQuotes(other.name) + ". Nothing was changed.");
        }
        if (other.name == profile.name) {
            throw CommandError(
                ExitCode::failed,
                "There is a profile " + inQuotes(other.name) + " already. Nothing was changed; give another --name.");
        }
    }
}

std::optional<std::string> newPassword(const Profile& profile, bool mayAsk, const Surroundings& around) {
    if (auto given = givenPassword(around)) return given;
    if (!mayAsk || ::isatty(STDIN_FILENO) == 0) return std::nullopt;
    auto typed = askPassword(
        "FTP password of " + oneLine(profile.username) + " at " + oneLine(profile.host) + " (empty to store none): ",
        around.interrupt);
    return typed.empty() ? std::nullopt : std::optional(std::move(typed));
}

// Both or nothing. The password is stored here rather than by the model, which would start an enabled profile with it:
// adding one contacts no server.
void store(AppModel& model, const Profile& profile, const std::optional<std::string>& password) {
    if (password) PasswordStore::save(*password, profile.id);
    try {
        model.save(profile, std::nullopt);
    } catch (const std::exception&) {
        if (password) PasswordStore::remove(profile.id);
        throw;
    }
}

void report(const Profile& saved, bool passwordStored, const Surroundings& around) {
    Output& output = around.output;
    if (output.json()) {
        output.line(encode(saved));
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
    const StateStore store = openState(around.options);
    const InstanceLock held = holdState(store);
    MainQueue queue;
    AppModel model(
        queue, {.storeOverride = store,
                .passwordAccess = {.read = [](const Uuid&) -> std::string { throw SyncError("Not started."); }},
                .watches = false});
    requireLoaded(model);
    const Profile profile = validated(asked);
    requireNew(profile, model.profiles());
    const auto password = newPassword(profile, request.from.empty(), around);
    try {
        zembrastel::store(model, profile, password);
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, "Cannot save the profile " + inQuotes(profile.name) + ": " + sentence(describe(error))
                                  + " It was not added.");
    }
    report(*model.profile(profile.id), password.has_value(), around);
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
    std::vector<CLI::Option*> fields;
    const auto field = [&](const char* name, auto& target, const char* type, const char* description) {
        auto* option = command->add_option(name, target, description)->type_name(type);
        fields.push_back(option);
        return option;
    };
    const auto list = [&](const char* name, std::vector<std::string>& target, const char* type, const char* text) {
        takeOneEach(*field(name, target, type, text));
    };
    const auto flag = [&](const char* name, bool& target, const char* description) {
        fields.push_back(command->add_flag(name, target, description));
    };
    field("--name", options.name, "NAME", "What to call the profile");
    field("--host", options.host, "HOST", "The FTP server: a host name or IPv4 address");
    field("--port", options.port, "PORT", "Its port, when not the usual one: 21, or 990 for implicit");
    field(
        "--transport", options.transport, "KIND",
        "ftps (encrypted, the default), ftp (not encrypted)\nor implicit (FTPS of the old kind)")
        ->check(notEmpty());
    field("--username", options.username, "USER", "The FTP user name");
    field(
        "--remote-folder", options.remoteFolder, "PATH",
        "The site's folder on the server (default /public_html).\nWithout a leading \"/\" it starts in the login "
        "folder");
    field("--local-folder", options.localFolder, "PATH", "The folder here that is to be published");
    list(
        "--exclude", options.exclude, "RULE",
        "Leave out what the rule matches, such as *.psd, besides the\nusual rules (repeatable)");
    field("--exclusions", options.exclusions, "TEXT", "All exclusion rules, one a line, in place of the usual ones");
    flag("--enabled", options.enabled, "Have watch, when it is given no name, watch this profile too");
    list("--sync", options.sync, "PATH", "Sync this file or folder and no others (repeatable)");
    list("--no-sync", options.noSync, "PATH", "Do not sync this file or folder (repeatable)");
    flag("--needs-download", options.needsDownload, "Download from the server before anything is uploaded");
    list("--download", options.download, "PATH", "Download this file or folder then; / is all (repeatable)");
    list("--no-download", options.noDownload, "PATH", "Do not download this file or folder (repeatable)");
    field("--id", options.id, "UUID", "The profile's id, when not a new one")->check(notEmpty());
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

} // namespace zembrastel
