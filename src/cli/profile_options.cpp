#include "cli/profile_options.h"

#include "cli/exit_code.h"
#include "cli/presentation.h"
#include "cli/relative_path.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel {
namespace {

TransferProtocol protocolFrom(const std::string& text) {
    if (text == "ftps") return TransferProtocol::ftps;
    if (text == "ftp") return TransferProtocol::ftp;
    if (text == "implicit") return TransferProtocol::implicitTLS;
    if (const auto known = transferProtocol(text)) return *known;
    throw CommandError(ExitCode::usage, "--transport is ftps, ftp or implicit, not " + inQuotes(text) + ".");
}

void addRules(DownloadSelection& selection, const std::vector<std::string>& paths, bool chosen, const char* option) {
    for (const auto& typed : paths) {
        const std::string path = relativePath(typed);
        const auto components = splitNonEmpty(path, '/');
        if (std::ranges::find(components, "..") != components.end()) {
            throw CommandError(
                ExitCode::usage, std::string(option)
                                     + " takes a path below the profile's folders, without \"..\", and not "
                                     + inQuotes(typed) + ".");
        }
        if (const auto [rule, isNew] = selection.rules.emplace(path, chosen); !isNew && rule->second != chosen) {
            throw CommandError(ExitCode::usage, "The path " + inQuotes(typed) + " is both chosen and left out.");
        }
    }
}

std::optional<DownloadSelection> selectionFrom(
    const std::vector<std::string>& chosen, const std::vector<std::string>& leftOut, const std::string& option) {
    if (chosen.empty() && leftOut.empty()) return std::nullopt;
    DownloadSelection selection;
    addRules(selection, chosen, true, ("--" + option).c_str());
    addRules(selection, leftOut, false, ("--no-" + option).c_str());
    // Who only says what to leave out means to have the rest.
    if (chosen.empty()) selection.rules.emplace("", true);
    return selection;
}

Exclusions exclusionsFrom(const ProfileOptions& options) {
    std::string text = options.exclusions.value_or(std::string(Exclusions::defaultText));
    for (const auto& rule : options.exclude) {
        if (!text.empty() && text.back() != '\n') text += '\n';
        text += rule;
    }
    return Exclusions(std::move(text));
}

} // namespace

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
    profile.name = options.name;
    profile.host = options.host;
    if (!options.transport.empty()) profile.transport = protocolFrom(options.transport);
    profile.port = options.port.value_or(defaultPort(profile.transport));
    profile.username = options.username;
    if (options.remoteFolder) profile.remoteFolder = *options.remoteFolder;
    if (!options.localFolder.empty()) {
        profile.localFolder = std::filesystem::absolute(options.localFolder).string();
    }
    profile.exclusions = exclusionsFrom(options);
    profile.enabled = options.enabled;
    profile.needsDownload = options.needsDownload;
    profile.syncSelection = selectionFrom(options.sync, options.noSync, "sync");
    profile.initialDownloadSelection = selectionFrom(options.download, options.noDownload, "download");
    if (profile.requiresDownloadSelection()) {
        throw CommandError(
            ExitCode::usage,
            "--needs-download needs --download PATH as well, to say what; --download / is everything.");
    }
    return profile;
}

} // namespace zembrastel
