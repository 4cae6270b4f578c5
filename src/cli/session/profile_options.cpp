#include "cli/session/profile_options.h"

#include "cli/command.h"
#include "cli/session/profile_choice.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/standard_paths.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

TransferProtocol protocolFrom(const std::string& text) {
    if (text == "ftps") return TransferProtocol::ftps;
    if (text == "ftp") return TransferProtocol::ftp;
    if (text == "implicit") return TransferProtocol::implicitTLS;
    if (const auto known = transferProtocol(text)) return *known;
    throw CommandError(ExitCode::usage, translate("--transport is ftps, ftp or implicit, not %1.", {inQuotes(text)}));
}

OptIn switchFrom(const std::string& text, const std::string& option) {
    if (text == "on" || text == "off") return {.on = text == "on"};
    throw CommandError(ExitCode::usage, translate("%1 is on or off, not %2.", {option, inQuotes(text)}));
}

// "/" is everything. Another path that starts with "/" is below the local folder.
std::string selectedPath(const std::string& typed, const std::string& localFolder, const std::string& option) {
    std::filesystem::path path = relativePath(typed);
    if (typed.starts_with('/') && !path.empty() && !localFolder.empty()) {
        path = std::filesystem::path(typed).lexically_normal().lexically_relative(
            std::filesystem::path(localFolder).lexically_normal());
    }
    const std::string below = relativePath(path.string());
    const auto components = splitNonEmpty(below, '/');
    if (std::ranges::find(components, "..") == components.end()) return below;
    throw CommandError(
        ExitCode::usage, translate(
                             "%1 takes a path as seen from the profile's folder, such as images/logo.svg, and not %2.",
                             {option, inQuotes(typed)}));
}

void addRules(
    DownloadSelection& selection, const std::vector<std::string>& paths, bool chosen, const std::string& option,
    const std::string& localFolder) {
    for (const auto& typed : paths) {
        const std::string path = selectedPath(typed, localFolder, option);
        if (const auto [rule, isNew] = selection.rules.emplace(path, chosen); !isNew && rule->second != chosen) {
            throw CommandError(
                ExitCode::usage, translate("The path %1 is both chosen and left out.", {inQuotes(typed)}));
        }
    }
}

std::optional<DownloadSelection> selectionFrom(
    const std::vector<std::string>& chosen, const std::vector<std::string>& leftOut, const std::string& option,
    const std::string& localFolder) {
    if (chosen.empty() && leftOut.empty()) return std::nullopt;
    DownloadSelection selection;
    addRules(selection, chosen, true, "--" + option, localFolder);
    addRules(selection, leftOut, false, "--no-" + option, localFolder);
    // A user who only names paths to leave out wants the rest.
    if (chosen.empty()) selection.rules.emplace("", true);
    return selection;
}

Exclusions changedExclusions(const Exclusions& before, const ProfileOptions& options) {
    std::string text = options.exclusions.value_or(before.text());
    for (const auto& rule : options.exclude) {
        if (!text.empty() && text.back() != '\n') text += '\n';
        text += rule;
    }
    return Exclusions(std::move(text));
}

void changeServer(Profile& profile, const ProfileOptions& options) {
    const bool portIsUsual = profile.port == defaultPort(profile.transport);
    if (options.transport) profile.transport = protocolFrom(*options.transport);
    if (portIsUsual) profile.port = defaultPort(profile.transport);
    if (options.port) profile.port = *options.port;
    if (options.host) profile.host = *options.host;
    if (options.username) profile.username = *options.username;
    if (options.remoteFolder) profile.remoteFolder = *options.remoteFolder;
}

} // namespace

std::vector<Option> addProfileFields(Syntax& syntax, ProfileOptions& options) {
    const auto field = [&syntax](const char* name, auto& target, const char* type, const char* help) {
        return syntax.option(name, target, type, help);
    };
    return {
        field("--name", options.name, "NAME", "The name of the profile"),
        field("--host", options.host, "HOST", "The FTP server: a host name or IPv4 address"),
        field("--port", options.port, "PORT", "Its port, if not the usual one: 21, or 990 for implicit").portNumber(),
        field(
            "--transport", options.transport, "KIND",
            "ftps (encrypted, the default), ftp (not encrypted)\nor implicit (the older kind of FTPS)")
            .notEmpty(),
        field("--username", options.username, "USER", "The FTP user name"),
        field(
            "--remote-folder", options.remoteFolder, "PATH",
            "The site's folder on the server (default /public_html).\nWithout a leading \"/\" it starts in the login "
            "folder")
            .notEmpty(translatable("must not be empty; / is the top of the server")),
        syntax.flag(
            "--create-remote-folder", options.createRemoteFolder,
            "Create that folder on the server now if it does not exist"),
        field("--local-folder", options.localFolder, "PATH", "The local folder to publish"),
        field(
            "--exclude", options.exclude, "RULE",
            "Exclude what the rule matches, such as *.psd, in addition\nto the usual rules (repeatable)")
            .repeatable(),
        field(
            "--exclusions", options.exclusions, "TEXT", "All exclusion rules, one per line, replacing the usual ones"),
        field(
            "--compare-contents", options.compareContents, "SWITCH",
            "on: do not send files that have a new date but the content\nthat was uploaded before. off is the default")
            .notEmpty(),
        syntax.flag("--enabled", options.enabled, "Watch this profile when watch is called without a name"),
        field("--sync", options.sync, "PATH", "Sync this file or folder and no others (repeatable)").repeatable(),
        field("--no-sync", options.noSync, "PATH", "Do not sync this file or folder (repeatable)").repeatable(),
        syntax.flag("--needs-download", options.needsDownload, "Download from the server before anything is uploaded"),
        field("--download", options.download, "PATH", "Include this in the first download; / is all (repeatable)")
            .repeatable(),
        field("--no-download", options.noDownload, "PATH", "Do not download this file or folder (repeatable)")
            .repeatable()};
}

Profile changedProfile(Profile profile, const ProfileOptions& options) {
    if (options.name) profile.name = *options.name;
    changeServer(profile, options);
    if (options.localFolder) {
        const bool isEmpty = options.localFolder->empty();
        profile.localFolder = isEmpty ? "" : std::filesystem::absolute(*options.localFolder).string();
    }
    profile.exclusions = changedExclusions(profile.exclusions, options);
    if (options.compareContents) {
        profile.compareContents = switchFrom(*options.compareContents, "--compare-contents");
    }
    if (options.enabled || options.disabled) profile.enabled = options.enabled;
    if (options.needsDownload) profile.needsDownload = true;
    const std::string& folder = profile.localFolder;
    if (auto chosen = selectionFrom(options.sync, options.noSync, "sync", folder)) {
        profile.syncSelection = std::move(chosen);
    }
    if (auto chosen = selectionFrom(options.download, options.noDownload, "download", folder)) {
        profile.initialDownloadSelection = std::move(chosen);
    }
    return profile;
}

Profile profileFrom(const ProfileOptions& options) {
    Profile profile;
    if (!options.id.empty()) {
        const auto id = Uuid::parse(options.id);
        if (!id) {
            throw CommandError(
                ExitCode::usage,
                translate("--id is 32 hexadecimal digits in groups of 8-4-4-4-12, not %1.", {inQuotes(options.id)}));
        }
        profile.id = *id;
    }
    profile = changedProfile(std::move(profile), options);
    if (profile.requiresDownloadSelection()) {
        throw CommandError(
            ExitCode::usage,
            translate("--needs-download needs --download PATH as well, to say what; --download / is everything."));
    }
    return profile;
}

Profile validProfile(const Profile& profile) {
    try {
        return profile.validated();
    } catch (const SyncError& error) {
        throw CommandError(ExitCode::failed, reasonText(error) + " " + translate("Nothing was changed."));
    }
}

void requireSiteFolder(const std::string& localFolder) {
    std::error_code unknown; // a home folder that does not exist is in no other folder
    const auto home = std::filesystem::canonical(homeFolder(), unknown);
    const auto folder = std::filesystem::path(localFolder).lexically_normal();
    const bool holdsHome = !unknown && !folder.empty() && *home.lexically_relative(folder).begin() != "..";
    if (!holdsHome && folder != "/") return;
    throw CommandError(
        ExitCode::failed, translate(
                              "The local folder %1 is or holds your home folder, with keys and passwords that must not "
                              "be published. Nothing was changed; name the site's own folder.",
                              {oneLine(localFolder)}));
}

void requireUnused(const Profile& profile, const std::vector<Profile>& profiles, const Profile* before) {
    for (const auto& other : profiles) {
        if (before != nullptr && other.id == before->id) continue;
        if (other.id == profile.id) {
            throw CommandError(
                ExitCode::failed,
                translate("The id %1 is that of %2. Nothing was changed.", {profile.id.text(), inQuotes(other.name)}));
        }
        if (other.name == profile.name) {
            throw CommandError(
                ExitCode::failed, translate(
                                      "There is a profile %1 already. Nothing was changed; give another --name.",
                                      {inQuotes(other.name)}));
        }
    }
}

} // namespace zembrastel::cli
