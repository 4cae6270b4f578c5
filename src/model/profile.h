// A profile as the user defines it: server and login, both folders, and what to exclude.
//
// A value; any thread. It does not contain the password: see password_store.h.
#pragma once

#include "model/download_selection.h"
#include "model/exclusions.h"
#include "model/trusted_key.h"
#include "platform/uuid.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

enum class TransferProtocol { ftps, ftp, implicitTLS };

inline constexpr std::array allTransferProtocols{
    TransferProtocol::ftps, TransferProtocol::ftp, TransferProtocol::implicitTLS};

// Title in the interface and value in the saved file: "FTPS (TLS)", "FTP" or "FTPS (implicit TLS)".
[[nodiscard]] std::string_view rawValue(TransferProtocol protocol);

// nullopt for any other text.
[[nodiscard]] std::optional<TransferProtocol> transferProtocol(std::string_view rawValue);

[[nodiscard]] std::int64_t defaultPort(TransferProtocol protocol);

// A choice that is off unless the user turned it on; the saved state has it only while it is on.
struct OptIn {
    bool on = false;

    constexpr explicit operator bool() const { return on; }
    friend bool operator==(const OptIn&, const OptIn&) = default;
};

struct Profile {
    Uuid id = Uuid::random();
    std::string name;
    std::string host; // a name or an IPv4 address; no scheme, path or port
    std::int64_t port = 21;
    TransferProtocol transport = TransferProtocol::ftps;
    std::string username;
    std::string remoteFolder = "/public_html"; // from the server's root with a leading "/", else from the login folder
    std::string localFolder;                   // absolute
    Exclusions exclusions;
    bool enabled = false;       // watched
    bool needsDownload = false; // the initial download must run before watching
    std::optional<DownloadSelection> initialDownloadSelection;
    std::optional<DownloadSelection> syncSelection;
    std::optional<TrustedKey> trustedKey; // instead of a certificate that can be verified
    OptIn compareContents;                // a file with a new date but the content that was published is not sent

    // A copy with name and host trimmed, the local folder resolved to its real path, and without a trusted key of
    // another server. Throws SyncError about the first broken rule.
    [[nodiscard]] Profile validated() const;

    // Throws SyncError if requiresDownloadSelection().
    void validateDownloadSelection() const;

    // The trusted key, if it is for this host and port and the connection is encrypted; else nullptr.
    [[nodiscard]] const TrustedKey* keyInForce() const;

    // True if an initial download is due, but nothing is selected for it.
    [[nodiscard]] bool requiresDownloadSelection() const;

    // The files that syncing covers: the sync selection, or else the initial one; nullopt for everything.
    [[nodiscard]] const std::optional<DownloadSelection>& effectiveSyncSelection() const;

    // True if there is a selection that selects nothing.
    [[nodiscard]] bool hasEmptySyncSelection() const;

    [[nodiscard]] bool includesInSync(std::string_view path) const;
    [[nodiscard]] bool visitsForSync(std::string_view folder) const;

    [[nodiscard]] bool excludes(std::string_view path) const { return exclusions.match(path); }

    friend bool operator==(const Profile&, const Profile&) = default;
};

// True if both use the same folder of the same login on a server. If not, records about one do not apply to the other.
[[nodiscard]] bool isSamePlaceOnServer(const Profile& a, const Profile& b);

} // namespace zembrastel
