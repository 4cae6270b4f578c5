// A file that is newer on the server, and the one rule that says so.
#pragma once

#include "model/error.h"
#include "model/fingerprint.h"
#include "model/remote_date.h"

#include <optional>
#include <string>

namespace zembrastel {

struct RemoteChange {
    std::string path;         // relative
    Fingerprint local;        // of the local file when the two were compared
    RemoteDate remoteDate;    // of the server's file at that time
    bool bothChanged = false; // the local file was edited as well since the last synchronisation

    friend bool operator==(const RemoteChange&, const RemoteChange&) = default;
};

// Why one file was not replaced: it changed or vanished since the comparison, here or on the server. Other files still
// can be.
class ChangedMeanwhile : public SyncError {
public:
    using SyncError::SyncError;
};

// Is the server's file newer than the local one by more than a second, and, where a date of it is known, changed by
// more than a second since? The second absorbs servers that keep or report whole seconds.
[[nodiscard]] bool shouldOffer(RemoteDate remote, const Fingerprint& local, std::optional<RemoteDate> knownRemote);

// The second half of that rule: is the server's file another version than the known one?
[[nodiscard]] bool isUnknownVersion(RemoteDate remote, std::optional<RemoteDate> knownRemote);

} // namespace zembrastel
