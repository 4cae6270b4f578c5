#include "cli/session/profile_options.h"

#include "cli/exit_code.h"
#include "cli/session/relative_path.h"
#include "cli/text/presentation.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

TransferProtocol protocolFrom(const std::string& text) {
    if (text == "ftps") return TransferProtocol::ftps;
    if (text == "ftp") return TransferProtocol::ftp;
    if (text == "implicit") return TransferProtocol::implicitTLS;
    if (const auto known = transferProtocol(text)) return *known;
    throw CommandError(ExitCode::usage, "--transport is ftps, ftp or implicit, not " + inQuotes(text) + ".");
}

// "/" is everything. Another path that starts with "/" is one of the local folder's.
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
        ExitCode::usage, option + " takes a path as seen from the profile's folder, such as images/logo.svg, and not "
                             + inQuotes(typed) + ".");
}

void addRules(
    DownloadSelection& selection, const std::vector<std::string>& paths, bool chosen, const std::string& option,
    const std::string& localFolder) {
    for (const auto& typed : paths) {
        const std::string path = selectedPath(typed, localFolder, option);
        if (const auto [rule, isNew] = selection.rules.emplace(path, chosen); !isNew && rule->second != chosen) {
            throw CommandError(ExitCode::usage, "The path " + inQuotes(typed) + " is both chosen and left out.");
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
    // Who only says what to leave out means to have the rest.
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

Profile changedProfile(Profile profile, const ProfileOptions& options) {
    if (options.name) profile.name = *options.name;
    changeServer(profile, options);
    if (options.localFolder) {
        const bool isEmpty = options.localFolder->empty();
        profile.localFolder = isEmpty ? "" : std::filesystem::absolute(*options.localFolder).string();
    }
    profile.exclusions = changedExclusions(profile.exclusions, options);
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
                "--id is 32 hexadecimal digits in groups of 8-4-4-4-12, not " + inQuotes(options.id) + ".");
        }
        profile.id = *id;
    }
    profile = changedProfile(std::move(profile), options);
    if (profile.requiresDownloadSelection()) {
        throw CommandError(
            ExitCode::usage,
            "--needs-download needs --download PATH as well, to say what; --download / is everything.");
    }
    return profile;
}

} // namespace zembrastel::cli
