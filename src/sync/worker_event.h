// What a worker tells the model.
//
// Values, made on the worker's thread and applied on the main context.
#pragma once

#include "model/fingerprint.h"
#include "model/remote_date.h"
#include "sync/phase.h"
#include "sync/transfer_progress.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <variant>

namespace zembrastel {

namespace event {

// Every phase change, and every poll.
struct Status {
    Phase phase = Phase::watching; // filesMissing: see SyncWorker::filesMayBeGone
    std::string detail;
    std::int64_t pending = 0; // changed files
};

// A line for the activity log.
struct Activity {
    std::string text;
    bool error = false;
};

// A file is live on the server in this version.
struct Uploaded {
    std::string path;
    Fingerprint fingerprint;
};

// The baseline was replaced as a whole.
struct Baseline {
    FileMap files;
};

// A file of the server was installed locally.
struct Downloaded {
    std::string path;
    Fingerprint fingerprint;
};

// The server's date of a file whose two sides are known to be the same.
struct RemoteDate {
    std::string path;
    zembrastel::RemoteDate date;
};

// The initial download is complete.
struct DownloadFinished {};

// The local folder's disk was unmounted for a while. Others may have changed the server meanwhile, and somebody the
// disk: the worker ends, and nothing may be uploaded before both were compared.
struct FolderReturned {};

// These files were not replaced, because the server has another version of them than the one last seen. The worker
// ends: the server has to be compared first.
struct ServerChanged {
    std::set<std::string, std::less<>> paths;
};

// The one pass that was asked for is over.
struct PassEnded {
    std::optional<std::string> failure; // why it is incomplete; nothing when all is on the server
};

} // namespace event

using WorkerEvent = std::variant<
    event::Status, event::Activity, event::Uploaded, event::Baseline, event::Downloaded, event::RemoteDate,
    event::DownloadFinished, event::FolderReturned, event::ServerChanged, event::PassEnded>;

// The ways to the model. Called on the worker's thread.
struct EventSink {
    // Returns once the model has applied the event. Throws Cancelled when the worker is stopped before that.
    std::function<void(WorkerEvent)> deliver;
    // Returns at once; the model gets posted events in order.
    std::function<void(WorkerEvent)> post;
    // How far a long transfer has come, after the events before it and in no hurry: returns at once, and where the
    // model has not yet taken the last one, this one is dropped. Without it no transfer is looked at.
    std::function<void(const TransferProgress&)> progress = {};
};

} // namespace zembrastel
