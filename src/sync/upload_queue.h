// The uploads of one worker: which of the changed files may go up now, their publication, and what is learnt from it.
//
// Identity; lives as long as the worker's run and is used on its thread. It keeps the version of each file that was
// last seen on the server, so that no other one is replaced, and the failures of single files, which hold up no others.
#pragma once

#include "model/fingerprint.h"
#include "model/publish_journal.h"
#include "model/server_version.h"
#include "sync/file_retries.h"
#include "sync/progress_meter.h"
#include "sync/sync_worker.h"
#include "transport/ftp_transport.h"
#include "transport/publish/publishing.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zembrastel {

// What the user reads when the upload of this file failed: the text names the file at its end if it does not name it
// yet.
[[nodiscard]] std::string uploadProblem(std::string problem, const std::string& path);

class UploadQueue {
public:
    // All are borrowed for as long as the object lives. `baseline` is changed by what goes up.
    UploadQueue(const SyncWorker& started, const FTPTransport& used, ProgressMeter& counter, FileMap& synchronised);
    UploadQueue(const UploadQueue&) = delete;
    UploadQueue& operator=(const UploadQueue&) = delete;

    // Those of the stable files that may go up: not those that wait after a failure of their own, nor, for two minutes,
    // those that a program has open for writing.
    [[nodiscard]] std::vector<std::string> ready(const std::vector<std::string>& stable, const FileMap& current);

    // Do all of these files wait after failures of their own?
    [[nodiscard]] bool allWait(const std::vector<std::string>& changed, const FileMap& current) const;

    // A file that is edited during the call waits until the call returns, which a large upload can delay for up to ten
    // minutes: uploads go one after another in the order of their paths, and curl takes no new work once it runs.
    //
    // Sends the files in this order and reports each as it goes live. `pending` is how many files changed. A failure of
    // a single file is reported and remembered; see failure(). Throws SyncError when the server failed, and Cancelled
    // after event::ServerChanged, when a file was not replaced because the server's is another one than the last seen.
    void send(const std::vector<std::string>& paths, const FileMap& current, std::int64_t pending);

    // Asks again for the server's dates that were missing when their files went live. Throws Cancelled after
    // event::ServerChanged, when the server has a file of another size than was uploaded.
    void queryMissingDates();

    // Why a file waits, for the user, and how long it still does: the first one in the order of paths. Nullopt when no
    // file waits.
    struct Waiting {
        std::string problem;
        std::chrono::seconds left;
    };
    [[nodiscard]] std::optional<Waiting> failure() const;

    // Files that are not among the changed ones any more wait for nothing.
    void keepFailuresOf(const std::vector<std::string>& changed);

    // How many files are live of those that send() was given, after a failure of the server in the calls before as
    // well.
    std::size_t doneInBurst = 0;

private:
    [[nodiscard]] LastSeen lastSeen(const std::string& path) const;
    [[nodiscard]] bool isBeingWritten(const std::string& path);
    void reportDisputed();
    void announce(const std::vector<CompleteCopy>& copies);
    void published(const CompleteCopy& copy);
    void failed(const FileToPublish& file, const PublishFailure& failure);
    void activity(std::string text, bool error) const;

    const SyncWorker& worker;
    const FTPTransport& transport;
    ProgressMeter& meter;
    FileMap& baseline;
    ServerVersions known;
    std::optional<PublishJournal> journal;
    FileRetries retries;
    std::map<std::string, FileRetries::Time, std::less<>> writtenSince; // files that a program has open for writing
    std::map<std::string, int, std::less<>> undated; // went live without a date, which was queried so often since
    std::set<std::string, std::less<>> disputed;     // not replaced
    std::optional<std::string> serverFailure;
};

} // namespace zembrastel
