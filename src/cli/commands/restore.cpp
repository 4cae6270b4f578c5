#include "cli/commands/restore.h"

#include "cli/session/kept_versions.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_path.h"
#include "cli/session/session.h"
#include "cli/text/option_texts.h"
#include "cli/text/presentation.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    std::string path;
    std::string version;
    bool latest = false;
};

// "2026-01-02 15:04:05 (3F2A9C1B), ...", the newest first.
std::string listed(const std::vector<Backup>& versions) {
    constexpr std::size_t most = 8;
    std::string text;
    for (std::size_t n = 0; n < std::min(most, versions.size()); ++n) {
        text += (n == 0 ? "" : ", ") + dateAndTime(versions[n].kept) + " (" + shortId(versions[n]) + ")";
    }
    if (versions.size() > most) text += " and older ones";
    return text + ".";
}

const Backup& choose(const std::vector<Backup>& versions, const Request& request, const std::string& path) {
    if (versions.empty()) {
        throw CommandError(
            ExitCode::failed,
            "There are no backups of " + inQuotes(path) + ". zembrastel-cli backups lists what there is.");
    }
    if (request.latest || (versions.size() == 1 && request.version.empty())) return versions.front();
    if (request.version.empty()) {
        throw CommandError(
            ExitCode::usage,
            "There are " + counted(versions.size(), "version") + " of " + inQuotes(path)
                + ". Choose one with --version, or the one that was kept last with --latest: " + listed(versions));
    }
    std::vector<Backup> meant;
    std::ranges::copy_if(
        versions, std::back_inserter(meant), [&](const Backup& each) { return isMeant(each, request.version); });
    if (meant.size() != 1) {
        throw CommandError(
            ExitCode::failed, (meant.empty() ? "No version of " : "More than one version of ") + inQuotes(path)
                                  + " was kept at " + inQuotes(request.version) + ". There is "
                                  + listed(meant.empty() ? versions : meant));
    }
    return *std::ranges::find(versions, meant.front());
}

Restored bringBack(const Profile& profile, const Backup& version, Interrupt& interrupt) {
    TransferControl control;
    const auto interruptible = interrupt.during([&control] { control.cancel(); });
    try {
        return restoreBackup(profile.localFolder, version, control);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, "Cannot restore " + inQuotes(version.path) + ": " + sentence(describe(error)));
    }
}

std::string whatHappensNext(const Profile& profile, const std::string& path) {
    if (profile.excludes(path) || !profile.includesInSync(path)) {
        return "The profile does not sync this path, so the server's copy stays as it is.";
    }
    return "Where Zembrastel watches the profile now, it uploads the file in a few seconds; otherwise the next watch "
           "does.";
}

ExitCode restore(const Surroundings& around, const Request& request) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, request.name);
    const std::string path = pathInProfile(profile, request.path);
    auto versions = keptVersions(profile, path, around);
    std::erase_if(versions, [&path](const Backup& each) { return each.path != path; });
    const Backup& version = choose(versions, request, path);
    const Restored done = bringBack(profile, version, around.interrupt);
    if (around.output.json()) {
        JsonLine object("restored");
        object.text("profile", profile.name).text("id", profile.id.text()).text("path", path);
        object.text("backup", version.id).text("kept", universalTime(version.kept)).flag("replaced", done.replaced);
        around.output.line(object);
        return ExitCode::done;
    }
    around.output.line(
        "Restored " + inQuotes(path) + " as it was until " + dateAndTime(version.kept) + "."
        + (done.replaced ? " The version that it replaced is a backup now." : ""));
    around.output.note(whatHappensNext(profile, path));
    return ExitCode::done;
}

} // namespace

void addRestore(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("restore", "Bring a kept version of a file back");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command->add_option("PATH", request->path, "The file: a path below the local folder, or an absolute\none in it")
        ->required()
        ->type_name("");
    auto* version = command
                        ->add_option(
                            "--version", request->version,
                            "Which version, by the time or the id that backups tells,\nor the beginning of it")
                        ->type_name("WHEN")
                        ->check(notEmpty());
    command->add_flag("--latest", request->latest, "The version that was kept last")->excludes(version);
    command->footer("What the local file holds now is kept as a backup in its turn. Only the local\n"
                    "folder is changed, so this works while a program is watching, which then\n"
                    "uploads the restored file.\n"
                    "Example: zembrastel-cli restore \"My website\" index.html --latest");
    command->callback(
        [&chosen, request] { chosen = [request](const Surroundings& around) { return restore(around, *request); }; });
}

} // namespace zembrastel::cli
