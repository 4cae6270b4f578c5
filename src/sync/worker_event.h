// The events that a worker sends to the model.
//
// Values, made on the worker's thread and applied on the main context.
#pragma once

#include "model/fingerprint.h"
#include "model/server_version.h"
#include "sync/phase.h"
#include "sync/transfer_progress.h"
#include "transport/failure.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace zembrastel {

namespace event {

// Every phase change, and every poll.
struct Status {
    Phase phase = Phase::watching; // filesMissing: see SyncWorker::filesMayBeGone
    std::string detail;
    std::int64_t pending = 0; // changed files
    // Of a worker that waits to retry: the end of the detail after the reason, why, until when, and how many changed
    // files wait with it.
    std::string outlook = {};
    std::optional<Failure> failure = std::nullopt;
    std::optional<std::chrono::system_clock::time_point> retryAt = std::nullopt;
    std::int64_t waiting = 0;
};

// A line for the activity log.
struct Activity {
    std::string text;
    bool error = false;
    std::optional<Failure> failure = std::nullopt; // that it reports
};

// All files that wait after a failure of their own, when they are others than before. Other files go on.
struct FilesRefused {
    std::vector<Failure> failures; // in the order of their paths
};

// A file is live on the server in this version.
struct Uploaded {
    std::string path;
    Fingerprint fingerprint;
};

// These files have new versions with the content that was published. They are not sent.
struct ContentsUnchanged {
    FileMap files;
};

// The baseline was replaced as a whole.
struct Baseline {
    FileMap files;
};

// A server file was installed locally.
struct Downloaded {
    std::string path;
    Fingerprint fingerprint;
};

// The server's date of a file that is known to be the same on both sides.
struct RemoteDate {
    std::string path;
    zembrastel::RemoteDate date;
};

// The initial download is complete.
struct DownloadFinished {};

// The local folder's disk was unmounted for a while. Both the server and the disk may have changed meanwhile: the
// worker ends, and nothing may be uploaded before both are compared.
struct FolderReturned {};

// These files were not replaced, because the server has another version than the one last seen. The worker ends: the
// server must be compared first.
struct ServerChanged {
    std::set<std::string, std::less<>> paths;
};

// The single pass has ended.
struct PassEnded {
    std::optional<Failure> failure; // why it is incomplete; nullopt if all files are on the server
};

} // namespace event

using WorkerEvent = std::variant<
    event::Status, event::Activity, event::FilesRefused, event::Uploaded, event::ContentsUnchanged, event::Baseline,
    event::Downloaded, event::RemoteDate, event::DownloadFinished, event::FolderReturned, event::ServerChanged,
    event::PassEnded>;

// How events reach the model. Called on the worker's thread.
struct EventSink {
    // Returns when the model has applied the event. Throws Cancelled if the worker is stopped before that.
    std::function<void(WorkerEvent)> deliver;
    // Returns at once; the model gets posted events in order.
    std::function<void(WorkerEvent)> post;
    // The progress of a long transfer, applied after the events before it. Returns at once; a report is dropped if the
    // model has not yet applied the last one. If it is empty, transfers are not observed.
    std::function<void(const TransferProgress&)> progress = {};
};

} // namespace zembrastel
