#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/text.h"
#include "transport/download/backups.h"
#include "transport/download/local_replacement.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

struct BackupsRequest {
    std::string name;
    std::string path;
};

struct RestoreRequest {
    std::string name;
    std::string path;
    std::string version;
    bool latest = false;
};

constexpr std::size_t shortIdLength = 8;

bool isBelow(std::string_view path, std::string_view folder) {
    return folder.empty() || path == folder
           || (path.starts_with(folder) && path.substr(folder.size()).starts_with('/'));
}

// The kept versions of one file, of all files in one folder, or with "" of all files, in the order of listBackups().
std::vector<Backup> keptVersions(const Profile& profile, std::string_view path, const CommandContext& context) {
    TransferControl control;
    const auto interruptible = context.interrupt.during([&control] { control.cancel(); });
    try {
        auto versions = listBackups(profile.localFolder, control);
        std::erase_if(versions, [path](const Backup& each) { return !isBelow(each.path, path); });
        return versions;
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot read the backups of %1: %2", {inQuotes(profile.name), reasonText(error)}));
    }
}

// The beginning of the id is enough for users.
std::string shortId(const Backup& backup) { return backup.id.substr(0, shortIdLength); }

// Whether the user means this version by `when`: a time as this program prints it, local or in UTC, an id, or the
// beginning of one of these.
bool isMeant(const Backup& backup, std::string_view when) {
    return dateAndTime(backup.kept).starts_with(when) || universalTime(backup.kept).starts_with(when)
           || asciiLowercase(backup.id).starts_with(asciiLowercase(when));
}

void printBackupsAsJson(const Profile& profile, const std::vector<Backup>& versions, Output& output) {
    const auto totals = totalsOf(versions);
    auto all = JsonLine::forProfile("backups", profile);
    all.text("folder", profile.localFolder);
    all.number("files", totals.files).number("versions", totals.versions).number("bytes", totals.bytes);
    output.line(all);
    for (const auto& version : versions) {
        JsonLine object("backup");
        object.text("path", version.path).text("backup", version.id).text("kept", universalTime(version.kept));
        object.text("modified", universalTime(version.modified)).number("bytes", version.size);
        output.line(object);
    }
}

void printBackups(const std::vector<Backup>& versions, Output& output) {
    std::string file;
    for (const auto& version : versions) {
        if (file != version.path) output.line(printable(version.path));
        file = version.path;
        output.line(
            "  " + dateAndTime(version.kept) + "  " + shortId(version) + "  "
            + translate("%1, last changed %2", {bytesText(version.size), dateAndTime(version.modified)}));
    }
}

std::string backupsSummary(const Profile& profile, const BackupTotals& totals) {
    return translate(
        "%1, %2, %3 in %4.",
        {filesText(totals.files), translatePlural("%n version", "%n versions", totals.versions),
         bytesText(totals.bytes), oneLine((std::filesystem::path(profile.localFolder) / backupFolder).string())});
}

ExitCode listBackupsOf(const CommandContext& context, const BackupsRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    const std::string path = request.path.empty() ? "" : pathInProfile(profile, request.path);
    const auto versions = keptVersions(profile, path, context);
    if (context.output.json()) {
        printBackupsAsJson(profile, versions, context.output);
    } else if (versions.empty()) {
        context.output.line(
            path.empty() ? translate("There are no backups yet. One is made whenever a local file is replaced.")
                         : translate("There are no backups of %1.", {inQuotes(path)}));
    } else {
        printBackups(versions, context.output);
        context.output.line(backupsSummary(profile, totalsOf(versions)));
        context.output.note(translate("zembrastel-cli restore brings a version back. Backups are never removed."));
    }
    return ExitCode::done;
}

// "2026-01-02 15:04:05 (3F2A9C1B), ...", the newest first.
std::string listedVersions(const std::vector<Backup>& versions) {
    constexpr std::size_t maxVersions = 8;
    std::string text;
    for (std::size_t n = 0; n < std::min(maxVersions, versions.size()); ++n) {
        text += (n == 0 ? "" : ", ") + dateAndTime(versions[n].kept) + " (" + shortId(versions[n]) + ")";
    }
    if (versions.size() > maxVersions) text += translate(" and older ones");
    return text + ".";
}

const Backup& chooseVersion(
    const std::vector<Backup>& versions, const RestoreRequest& request, const std::string& path) {
    if (versions.empty()) {
        throw CommandError(
            ExitCode::failed,
            translate("There are no backups of %1. zembrastel-cli backups lists the existing ones.", {inQuotes(path)}));
    }
    if (request.latest || (versions.size() == 1 && request.version.empty())) return versions.front();
    if (request.version.empty()) {
        throw CommandError(
            ExitCode::usage, translatePlural(
                                 "There is %n version of %1. Choose one with --version, or the one that was kept last "
                                 "with --latest: %2",
                                 "There are %n versions of %1. Choose one with --version, or the one that was kept "
                                 "last with --latest: %2",
                                 versions.size(), {inQuotes(path), listedVersions(versions)}));
    }
    std::vector<Backup> meant;
    std::ranges::copy_if(
        versions, std::back_inserter(meant), [&](const Backup& each) { return isMeant(each, request.version); });
    if (meant.size() != 1) {
        throw CommandError(
            ExitCode::failed, meant.empty() ? translate(
                                  "No version of %1 was kept at %2. There is %3",
                                  {inQuotes(path), inQuotes(request.version), listedVersions(versions)})
                                            : translate(
                                                "More than one version of %1 was kept at %2. There is %3",
                                                {inQuotes(path), inQuotes(request.version), listedVersions(meant)}));
    }
    return *std::ranges::find(versions, meant.front());
}

Restored restoreVersion(const Profile& profile, const Backup& version, Interrupt& interrupt) {
    TransferControl control;
    const auto interruptible = interrupt.during([&control] { control.cancel(); });
    try {
        return restoreBackup(profile.localFolder, version, control);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, translate("Cannot restore %1: %2", {inQuotes(version.path), reasonText(error)}));
    }
}

std::string uploadNote(const Profile& profile, const std::string& path) {
    if (profile.excludes(path) || !profile.includesInSync(path)) {
        return translate("The profile does not sync this path, so the server's copy stays as it is.");
    }
    return translate(
        "If Zembrastel is watching the profile, it uploads the file in a few seconds; otherwise the next watch "
        "uploads it.");
}

ExitCode restoreFile(const CommandContext& context, const RestoreRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    const std::string path = pathInProfile(profile, request.path);
    auto versions = keptVersions(profile, path, context);
    std::erase_if(versions, [&path](const Backup& each) { return each.path != path; });
    const Backup& version = chooseVersion(versions, request, path);
    const Restored done = restoreVersion(profile, version, context.interrupt);
    if (context.output.json()) {
        auto object = JsonLine::forProfile("restored", profile);
        object.text("path", path);
        object.text("backup", version.id).text("kept", universalTime(version.kept)).flag("replaced", done.replaced);
        context.output.line(object);
        return ExitCode::done;
    }
    context.output.line(
        translate("Restored %1 as it was until %2.", {inQuotes(path), dateAndTime(version.kept)})
        + (done.replaced ? " " + translate("The version that it replaced is a backup now.") : ""));
    context.output.note(uploadNote(profile, path));
    return ExitCode::done;
}

} // namespace

void addBackups(Syntax& parent) {
    auto [command, request] =
        parent.command("backups", "List the kept versions of files that were replaced", listBackupsOf);
    command.profileArgument(request.name);
    command
        .argument(
            "PATH", request.path,
            "Only this file, or those in this folder: a path below the\nlocal folder, or an absolute one in it")
        .optional();
    command.footer("Whenever the program replaces a local file, the old version is kept in\n"
                   ".zembrastel-backups in the local folder. The list shows when each was replaced,\n"
                   "the beginning of its id, its size, and when it had last been changed.");
}

void addRestore(Syntax& parent) {
    auto [command, request] = parent.command("restore", "Restore a kept version of a file", restoreFile);
    command.profileArgument(request.name);
    command.argument("PATH", request.path, "The file: a path below the local folder, or an absolute\none in it");
    const auto version = command
                             .option(
                                 "--version", request.version, "WHEN",
                                 "Which version, by the time or the id that backups shows,\nor the beginning of it")
                             .notEmpty();
    command.flag("--latest", request.latest, "The version that was kept last").excludes({version});
    command.footer("The current contents of the local file are kept as a backup as well. Only the local\n"
                   "folder is changed, so this works while a program is watching, which then\n"
                   "uploads the restored file.\n"
                   "Example: zembrastel-cli restore \"My website\" index.html --latest");
}

} // namespace zembrastel::cli
