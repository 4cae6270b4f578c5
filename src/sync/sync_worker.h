// Keeps one profile's server up to date: the initial download where one is due, then poll, settle, upload, for ever.
//
// A value, copied into the thread that runs it; one thread a worker. It owns no shared state: all it learns goes to
// the model as events, of which the next waits until the last was applied. Local deletions are forgotten, never carried
// to the server.
#pragma once

#include "model/fingerprint.h"
#include "model/private_items.h"
#include "model/profile.h"
#include "model/publish_journal.h"
#include "model/remote_date.h"
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
inline constexpr int mostLooks = 15; // of one pass

// "… Retrying in 5 seconds."
[[nodiscard]] std::string retryDetail(const std::string& problem, std::chrono::seconds delay);

// The paths whose current version is not the one in the baseline, in ascending order.
[[nodiscard]] std::vector<std::string> changedPaths(const FileMap& current, const FileMap& baseline);

// Those of the changed paths that were the same at the previous poll: a file is sent once two polls saw one version.
[[nodiscard]] std::vector<std::string> stablePaths(
    const std::vector<std::string>& changed, const FileMap& current, const FileMap& previous);

// What the user reads when the local folder is empty and the baseline is not.
[[nodiscard]] std::string missingFilesProblem(const std::string& localFolder);

// The status of a worker at rest, and with changed files that wait, go up, or come down at first.
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
    std::shared_ptr<RetryWait> retryWait = std::make_shared<RetryWait>(); // to be woken by others
    std::shared_ptr<ServerTraits> traits = std::make_shared<ServerTraits>();
    // What the server check saw, and the dates recorded for what its listings do not show. A file on the server that is
    // neither is not replaced, unless the user has skipped the check.
    ServerVersions seen = {};
    RemoteDates recordedDates = {};
    bool mayReplaceUnseen = false;
    std::optional<PublishJournal> journal = std::nullopt; // of what is about to go live
    std::vector<PrivateItem> privateItems{};              // neither published nor replaced
    // The user says that the files are gone. Without that, a worker that finds the local folder empty at its first look
    // waits and keeps the baseline: perhaps the folder's disk is not mounted.
    bool filesMayBeGone = false;

    // Returns when the worker was stopped, by the token or through the control, when an initial download is due without
    // a selection, and when the local folder's disk is back: what became of the server meanwhile has to be looked at
    // first. Throws nothing: failures are reported as events and tried again.
    void run(const std::stop_token& stop) const;

    // Sends what changed, once, and reports PassEnded: when a look at the folder finds nothing that is not on the
    // server, at the first failure, which is not tried again, or when files go on changing for half a minute. No
    // initial download may be due. Throws nothing.
    void pass(const std::stop_token& stop) const;
};

} // namespace zembrastel
