// The uploads of one worker: chooses the changed files that may be uploaded now, publishes them, and keeps the results.
//
// Lives as long as the worker's run and is used on its thread. It keeps the version of each file that was last seen on
// the server, so that no other version is replaced, and the failures of single files, which do not delay other files.
#pragma once

#include "model/fingerprint.h"
#include "model/records/publish_journal.h"
#include "model/records/published_contents.h"
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
#include <utility>
#include <vector>

namespace zembrastel {

// The user's message for a failed upload of this file: names the file at the end if `problem` does not name it.
[[nodiscard]] std::string uploadProblem(std::string problem, const std::string& path);

class UploadQueue {
public:
    // All are borrowed for as long as the object lives. The object updates the baseline `synchronised` after uploads.
    UploadQueue(const SyncWorker& started, const FTPTransport& used, ProgressMeter& counter, FileMap& synchronised);
    UploadQueue(const UploadQueue&) = delete;
    UploadQueue& operator=(const UploadQueue&) = delete;

    // The stable files that may be uploaded: without those that wait after a failure of their own and, for two minutes,
    // those that a program has open for writing.
    [[nodiscard]] std::vector<std::string> ready(const std::vector<std::string>& stable, const FileMap& current);

    // Without those whose content is published already, if the profile compares contents; these are reported, and
    // counted in the log. Reads the files. Throws Cancelled.
    [[nodiscard]] std::vector<std::string> withoutUnchanged(
        const std::vector<std::string>& paths, const FileMap& current);

    // Records the contents of published files that have no record yet, if the profile compares contents: some of them
    // in each call, which begins no file after this time. Throws Cancelled.
    void recordContentsOfPublished(std::chrono::milliseconds atMost);

    // True if all these files wait after failures of their own.
    [[nodiscard]] bool allWait(const std::vector<std::string>& changed, const FileMap& current) const;

    // Sends the files in this order and reports each as it goes live. `pending` is the number of changed files. A
    // failure of a single file is reported and remembered; see failure(). Throws SyncError if the server failed, and
    // Cancelled after event::ServerChanged, if a file was not replaced because the server has an unseen version of it.
    //
    // A file that is edited during the call waits until it returns. A large upload can delay that for up to ten
    // minutes, since files are uploaded one after another in the order of their paths.
    void send(const std::vector<std::string>& paths, const FileMap& current, std::int64_t pending);

    // Requests the dates that the server did not report when their files went live. Throws Cancelled after
    // event::ServerChanged, if the server has a file of another size than the uploaded one.
    void queryMissingDates();

    // The first waiting file in the order of paths: why it waits, for the user, and for how long. Nullopt if no file
    // waits.
    struct Waiting {
        Failure failure;
        std::chrono::seconds left;
    };
    [[nodiscard]] std::optional<Waiting> failure() const;

    // The failure of the server that ended the last send(), with the file that was being sent; once.
    [[nodiscard]] std::optional<Failure> takeServerFailure() { return std::exchange(serverFailure, std::nullopt); }

    // Ends the waits of these files.
    void tryNow(const std::set<std::string>& paths);

    // Reports the files that wait, if they are others than before.
    void reportRefused();

    // Forgets the failures of files that are not among the changed ones any more.
    void keepFailuresOf(const std::vector<std::string>& changed);

    // The number of files that send() published, including earlier calls that ended with a failure of the server.
    std::size_t doneInBurst = 0;

private:
    void hashStaged(const FileToPublish& file, int copy);
    void recordContents(const std::vector<CompleteCopy>& copies);
    [[nodiscard]] LastSeen lastSeen(const std::string& path) const;
    [[nodiscard]] bool isBeingWritten(const std::string& path);
    void reportDisputed();
    static void writeJournal(const std::function<void()>& write);
    void announce(const std::vector<CompleteCopy>& copies);
    void published(const CompleteCopy& copy);
    void failed(const FileToPublish& file, const PublishFailure& failure);
    void activity(std::string text, bool error, std::optional<Failure> failure = std::nullopt) const;

    const SyncWorker& worker;
    const FTPTransport& transport;
    ProgressMeter& meter;
    FileMap& baseline;
    ServerVersions known;
    std::optional<PublishJournal> journal;
    std::optional<PublishedContents> contents;
    std::map<std::string, ContentHash, std::less<>> staged; // the contents that are being sent
    std::optional<std::vector<std::string>> unrecorded;     // published without a recorded content; once it is known
    FileRetries retries;
    std::map<std::string, FileRetries::Time, std::less<>> writtenSince; // files that a program has open for writing
    std::map<std::string, int, std::less<>> undated; // went live without a date; the number of queries since
    std::set<std::string, std::less<>> disputed;     // not replaced
    std::optional<Failure> serverFailure;
    std::vector<Failure> reportedRefused;
};

} // namespace zembrastel
