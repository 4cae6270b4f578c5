#include "cli/commands/backups.h"

#include "cli/session/kept_versions.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_path.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "platform/text.h"
#include "transport/download/local_replacement.h"

#include <CLI/CLI.hpp>
#include <filesystem>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    std::string path;
};

void tellAsJson(const Profile& profile, const std::vector<Backup>& versions, Output& output) {
    const auto totals = totalsOf(versions);
    JsonLine all("backups");
    all.text("profile", profile.name).text("id", profile.id.text()).text("folder", profile.localFolder);
    all.number("files", totals.files).number("versions", totals.versions).number("bytes", totals.bytes);
    output.line(all);
    for (const auto& version : versions) {
        JsonLine object("backup");
        object.text("path", version.path).text("backup", version.id).text("kept", universalTime(version.kept));
        object.text("modified", universalTime(version.modified)).number("bytes", version.size);
        output.line(object);
    }
}

void tell(const std::vector<Backup>& versions, Output& output) {
    std::string file;
    for (const auto& version : versions) {
        if (file != version.path) output.line(printable(version.path));
        file = version.path;
        output.line(
            "  " + dateAndTime(version.kept) + "  " + shortId(version) + "  " + counted(version.size, "byte")
            + ", last changed " + dateAndTime(version.modified));
    }
}

std::string summary(const Profile& profile, const BackupTotals& totals) {
    return counted(totals.files, "file") + ", " + counted(totals.versions, "version") + ", "
           + counted(totals.bytes, "byte") + " in "
           + oneLine((std::filesystem::path(profile.localFolder) / backupFolder).string()) + ".";
}

ExitCode list(const Surroundings& around, const Request& request) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, request.name);
    const std::string path = request.path.empty() ? "" : pathInProfile(profile, request.path);
    const auto versions = keptVersions(profile, path, around);
    if (around.output.json()) {
        tellAsJson(profile, versions, around.output);
    } else if (versions.empty()) {
        around.output.line(
            path.empty() ? "There are no backups yet. One is made whenever a local file is replaced."
                         : "There are no backups of " + inQuotes(path) + ".");
    } else {
        tell(versions, around.output);
        around.output.line(summary(profile, totalsOf(versions)));
        around.output.note("zembrastel-cli restore brings a version back. Nothing is ever removed here.");
    }
    return ExitCode::done;
}

} // namespace

void addBackups(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("backups", "List the kept versions of files that were replaced");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command
        ->add_option(
            "PATH", request->path,
            "Only this file, or those in this folder: a path below the\nlocal folder, or an "
            "absolute one in it")
        ->type_name("");
    command->footer("Whenever the program replaces a local file, the old version is kept in\n"
                    ".zembrastel-backups in the local folder. Of each is told when it was replaced,\n"
                    "the beginning of its id, its size, and when it had last been changed.");
    command->callback(
        [&chosen, request] { chosen = [request](const Surroundings& around) { return list(around, *request); }; });
}

} // namespace zembrastel::cli
