// One synchronisation job as the user defines it: which server and how, which folders, what to leave out.
//
// A value; any thread. The password is not part of it: see password_store.h.
#pragma once

#include "model/download_selection.h"
#include "model/exclusions.h"
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

// Nothing for any other text.
[[nodiscard]] std::optional<TransferProtocol> transferProtocol(std::string_view rawValue);

[[nodiscard]] std::int64_t defaultPort(TransferProtocol protocol);

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
    bool needsDownload = false; // the initial download is still to be done before watching
    std::optional<DownloadSelection> initialDownloadSelection;
    std::optional<DownloadSelection> syncSelection;

    // A copy with name and host trimmed and the local folder resolved to its real path, or a SyncError that says what
    // the first broken rule asks for.
    [[nodiscard]] Profile validated() const;

    // Throws SyncError when requiresDownloadSelection().
    void validateDownloadSelection() const;

    // Is an initial download due without anything chosen for it?
    [[nodiscard]] bool requiresDownloadSelection() const;

    // What ongoing syncing covers: the sync selection, else the initial one, else (nothing here) everything.
    [[nodiscard]] const std::optional<DownloadSelection>& effectiveSyncSelection() const;

    // Is there a selection that selects nothing?
    [[nodiscard]] bool hasEmptySyncSelection() const;

    [[nodiscard]] bool includesInSync(std::string_view path) const;
    [[nodiscard]] bool visitsForSync(std::string_view folder) const;

    [[nodiscard]] bool excludes(std::string_view path) const { return exclusions.match(path); }

    friend bool operator==(const Profile&, const Profile&) = default;
};

// Are both the same folder of the same login on a server? If not, nothing that is known of the one is true of the
// other.
[[nodiscard]] bool isSamePlaceOnServer(const Profile& a, const Profile& b);

} // namespace zembrastel
