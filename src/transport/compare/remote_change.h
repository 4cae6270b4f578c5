// A file that is newer on the server, and the rule for it.
//
// Values and pure functions; any thread.
#pragma once

#include "model/error.h"
#include "model/fingerprint.h"
#include "model/server_version.h"

#include <optional>
#include <string>

namespace zembrastel {

struct RemoteChange {
    std::string path;         // relative
    Fingerprint local;        // of the local file at the comparison
    RemoteDate remoteDate;    // of the server's file at the comparison
    bool bothChanged = false; // true if the local file was edited too since the last synchronisation

    friend bool operator==(const RemoteChange&, const RemoteChange&) = default;
};

// One file was not replaced because it changed or vanished since the comparison, locally or on the server. Other files
// can still be replaced.
class ChangedMeanwhile : public SyncError {
public:
    using SyncError::SyncError;
};

// True if the server's file is newer than the local one by more than a second and is an unknown version. The second
// allows for servers that keep or report whole seconds.
[[nodiscard]] bool shouldOffer(RemoteDate remote, const Fingerprint& local, std::optional<RemoteDate> knownRemote);

// True if no date is known, or the server's file is newer than the known date by more than a second.
[[nodiscard]] bool isUnknownVersion(RemoteDate remote, std::optional<RemoteDate> knownRemote);

} // namespace zembrastel
