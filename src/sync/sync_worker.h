// Keeps one profile's server up to date: the initial download if one is due, then polls and uploads until it is
// stopped.
//
// A value, copied into the thread that runs it; one thread per worker. It owns no shared state: all results go to the
// model as events, each after the model has applied the one before. Local deletions are forgotten, never transferred to
// the server.
#pragma once

#include "model/fingerprint.h"
#include "model/private_items.h"
#include "model/profile.h"
#include "model/records/publish_journal.h"
#include "model/records/published_contents.h"
#include "model/server_version.h"
#include "platform/clock.h"
#include "sync/retry_wait.h"
#include "sync/worker_event.h"
#include "transport/server_traits.h"
#include "transport/transfer_control.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace zembrastel {

inline constexpr std::chrono::seconds pollInterval{2};
inline constexpr int maxScans = 15; // of one pass

// "… Retrying in 5 seconds."
[[nodiscard]] std::string retryDetail(const std::string& problem, std::chrono::seconds delay);

[[nodiscard]] std::string retryOutlook(std::chrono::seconds delay);

// The paths whose current version differs from the baseline, in ascending order.
[[nodiscard]] std::vector<std::string> changedPaths(const FileMap& current, const FileMap& baseline);

// The changed paths with the same version at the previous poll: a file is sent when two polls find the same version.
[[nodiscard]] std::vector<std::string> stablePaths(
    const std::vector<std::string>& changed, const FileMap& current, const FileMap& previous);

// The message for an empty local folder with a baseline that is not empty.
[[nodiscard]] std::string missingFilesProblem(const std::string& localFolder);

// The status of a worker without work, with waiting files, during an upload, and during the initial download.
[[nodiscard]] event::Status watchingStatus();
[[nodiscard]] event::Status queuedStatus(std::int64_t pending);
[[nodiscard]] event::Status uploadingStatus(std::string path, std::int64_t pending);
[[nodiscard]] event::Status downloadingStatus();

struct SyncWorker {
    Profile profile;
    std::string password;
    std::shared_ptr<TransferControl> control;
    FileMap initialBaseline; // each file as last uploaded or downloaded
    EventSink events;
    Clock& clock;
    std::shared_ptr<RetryWait> retryWait = std::make_shared<RetryWait>(); // the model can wake it
    std::shared_ptr<ServerTraits> traits = std::make_shared<ServerTraits>();
    // The versions found by the server check, and the recorded dates for files that its listings do not show. Another
    // file on the server is not replaced, unless the user skipped the check.
    ServerVersions seen = {};
    RemoteDates recordedDates = {};
    bool mayReplaceUnseen = false;
    std::optional<PublishJournal> journal = std::nullopt; // of what is about to go live
    // Given if the profile compares contents: a changed file with the published content is not sent.
    std::optional<PublishedContents> contents = std::nullopt;
    std::vector<PrivateItem> privateItems{}; // neither published nor replaced
    // True if the user confirmed that the files are gone. Otherwise a worker whose first scan finds an empty folder
    // waits and keeps the baseline: perhaps the folder's disk is not mounted.
    bool filesMayBeGone = false;

    // Returns when the worker was stopped, by the token or through the control, if an initial download is due without a
    // selection, and when the local folder's disk is back: then the server must be compared first. Throws nothing:
    // failures are reported as events and retried.
    void run(const std::stop_token& stop) const;

    // Sends the changed files once and reports PassEnded: when a scan finds no more changes, at the first failure,
    // which is not retried, or if files keep changing for half a minute. No initial download may be due. Throws
    // nothing.
    void pass(const std::stop_token& stop) const;
};

} // namespace zembrastel
