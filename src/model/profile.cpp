#include "model/profile.h"

#include "model/error.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace zembrastel {
namespace {

constexpr std::string_view nul("\0", 1);

void require(bool condition, const std::string& request) {
    if (!condition) throw SyncError(request);
}

bool containsNul(std::string_view text) { return text.find(nul) != std::string_view::npos; }

bool isHostAndPort(std::string_view host, std::int64_t port) {
    constexpr std::int64_t highestPort = 65535;
    return !containsWhitespace(host) && host.find_first_of("/@?#\\\":") == std::string_view::npos && port >= 1
           && port <= highestPort;
}

bool isUsername(std::string_view username) {
    return username.find(':') == std::string_view::npos && !containsLineBreak(username) && !containsNul(username);
}

bool isRemoteFolder(std::string_view folder) {
    const auto components = splitNonEmpty(folder, '/');
    const auto leadsAstray = [](std::string_view component) { return component == "." || component == ".."; };
    return !folder.empty() && !containsLineBreak(folder) && !containsNul(folder)
           && std::ranges::none_of(components, leadsAstray);
}

// False if a text cannot be saved: a single one would prevent saving the whole state.
bool hasValidTexts(const Profile& profile) {
    const auto hasValidRules = [](const std::optional<DownloadSelection>& selection) {
        return !selection
               || std::ranges::all_of(selection->rules, [](const auto& rule) { return isValidUtf8(rule.first); });
    };
    return isValidUtf8(profile.name) && isValidUtf8(profile.host) && isValidUtf8(profile.username)
           && isValidUtf8(profile.remoteFolder) && isValidUtf8(profile.exclusions.text())
           && hasValidRules(profile.initialDownloadSelection) && hasValidRules(profile.syncSelection);
}

// The real path of an existing folder, or nullopt.
std::optional<std::string> realFolder(const std::string& folder) {
    if (containsNul(folder)) return std::nullopt;
    std::error_code failure;
    const auto resolved = std::filesystem::canonical(folder, failure);
    if (failure || !std::filesystem::is_directory(resolved, failure)) return std::nullopt;
    return resolved.string();
}

} // namespace

std::string_view rawValue(TransferProtocol protocol) {
    switch (protocol) {
    case TransferProtocol::ftps:
        return "FTPS (TLS)";
    case TransferProtocol::ftp:
        return "FTP";
    case TransferProtocol::implicitTLS:
        return "FTPS (implicit TLS)";
    }
    return {};
}

std::optional<TransferProtocol> transferProtocol(std::string_view rawValue) {
    for (const auto protocol : allTransferProtocols) {
        if (zembrastel::rawValue(protocol) == rawValue) return protocol;
    }
    return std::nullopt;
}

std::int64_t defaultPort(TransferProtocol protocol) { return protocol == TransferProtocol::implicitTLS ? 990 : 21; }

Profile Profile::validated() const {
    Profile copy = *this;
    copy.name = trimmed(name);
    copy.host = trimmed(host);
    require(
        !copy.name.empty() && !copy.host.empty() && !username.empty() && !localFolder.empty(),
        "Enter a name, server, username and local folder.");
    require(
        isHostAndPort(copy.host, port),
        "Use a hostname or IPv4 address without ftp://, a path or a port. Enter the port separately.");
    require(isUsername(username), "The FTP username cannot contain a colon or a line break.");
    require(isRemoteFolder(remoteFolder), "Enter a remote folder without . or .. path components.");
    validateDownloadSelection();
    auto resolved = realFolder(localFolder);
    require(resolved.has_value(), "Choose an existing local folder.");
    copy.localFolder = std::move(*resolved);
    require(
        isValidUtf8(copy.localFolder), "The local folder cannot be used, because its path is not valid UTF-8: "
                                           + printable(copy.localFolder) + ". Rename the folder or choose another.");
    require(
        hasValidTexts(copy), "The name, the server, the username, the remote folder, the exclusions and the selected "
                             "paths must be valid UTF-8.");
    if (copy.keyInForce() == nullptr) copy.trustedKey.reset();
    return copy;
}

const TrustedKey* Profile::keyInForce() const {
    const bool applies =
        trustedKey && transport != TransferProtocol::ftp && trustedKey->host == host && trustedKey->port == port;
    return applies ? &*trustedKey : nullptr;
}

void Profile::validateDownloadSelection() const {
    require(
        !requiresDownloadSelection(), "Choose the initial download files and folders before starting. Open Edit "
                                      "profile, choose the contents, and save your selection.");
}

bool Profile::requiresDownloadSelection() const {
    return needsDownload && !(initialDownloadSelection && initialDownloadSelection->hasSelection());
}

const std::optional<DownloadSelection>& Profile::effectiveSyncSelection() const {
    return syncSelection ? syncSelection : initialDownloadSelection;
}

bool Profile::hasEmptySyncSelection() const {
    const auto& selection = effectiveSyncSelection();
    return selection && !selection->hasSelection();
}

bool Profile::includesInSync(std::string_view path) const {
    const auto& selection = effectiveSyncSelection();
    return !selection || selection->includes(path);
}

bool Profile::visitsForSync(std::string_view folder) const {
    const auto& selection = effectiveSyncSelection();
    return !selection || selection->shouldVisit(folder);
}

bool isSamePlaceOnServer(const Profile& a, const Profile& b) {
    return a.host == b.host && a.port == b.port && a.username == b.username && a.remoteFolder == b.remoteFolder;
}

} // namespace zembrastel
