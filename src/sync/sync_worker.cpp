#include "sync/sync_worker.h"

#include "model/error.h"
#include "model/scan.h"
#include "platform/process_resources.h"
#include "platform/text.h"
#include "sync/progress_meter.h"
#include "sync/upload_queue.h"
#include "transport/ftp_transport.h"
#include "transport/listing/alike_names.h"

#include <algorithm>
#include <optional>
#include <set>

namespace zembrastel {
namespace {

// For contents that are not recorded yet: edits do not wait longer than this, plus the time for one file.
constexpr std::chrono::milliseconds recordingTimeOfPoll{200};
constexpr std::chrono::milliseconds recordingTimeOfPass{10000};

// Keeps the scan of this poll as the previous one when the poll ends, even after a failure.
struct KeepAsPrevious {
    FileMap& previous;
    const FileMap& current;
    ~KeepAsPrevious() { previous = current; }
};

// The state of one run. Cancelled can leave it at any point.
class WorkerRun {
public:
    WorkerRun(const SyncWorker& started, const std::stop_token& stopToken)
        : worker(started), stop(stopToken), meter(started.clock, started.events.progress),
          transport{
              .profile = started.profile,
              .password = started.password,
              .control = started.control,
              .observer = started.events.progress ? &meter : nullptr,
              .privateItems = started.privateItems,
              .traits = started.traits},
          baseline(started.initialBaseline), uploads(started, transport, meter, baseline) {}

    void run() {
        worker.retryWait->reset();
        if (worker.profile.needsDownload && !downloadInitially()) return;
        meter.begin(TransferProgress::Work::uploading);
        while (true) {
            if (stop.stop_requested()) return;
            poll();
        }
    }

    void pass() {
        std::optional<Failure> failure;
        try {
            if (worker.profile.needsDownload) {
                worker.profile.validateDownloadSelection();
                return download(); // its end starts the profile anew
            }
            failure = sendOnce();
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception& error) {
            failure = reasonOf(error);
            activity(failure->message, true, failure);
        }
        worker.events.deliver(event::PassEnded{failure});
    }

private:
    // Why not all files were sent; nullopt if all were.
    std::optional<Failure> sendOnce() {
        worker.control->check();
        previous = scanFolder();
        for (int scans = 0; scans < maxScans; ++scans) {
            sleep(pollInterval);
            const FileMap current = scanFolder();
            const KeepAsPrevious keep{previous, current};
            synchronise(current);
            if (const auto failure = uploads.failure()) return failure->failure;
            if (changedPaths(scanFolder(), baseline).empty()) {
                uploads.recordContentsOfPublished(recordingTimeOfPass);
                return std::nullopt;
            }
        }
        return Failure{.message = "Some files did not stop changing."};
    }

    // False if nothing may be downloaded.
    bool downloadInitially() {
        try {
            worker.profile.validateDownloadSelection();
        } catch (const SyncError& error) {
            status(Phase::lacksSelection, describe(error), 0);
            return false;
        }
        while (!tryDownload()) {
        }
        return true;
    }

    bool tryDownload() {
        if (stop.stop_requested()) throw Cancelled();
        try {
            download();
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception& error) {
            waitToRetry(Phase::retryingDownload, failureOf(error), 0);
            return false;
        }
        activity("Initial download complete. Watching for local changes.", false);
        worker.retryWait->reset();
        return true;
    }

    void download() {
        worker.control->check();
        worker.events.deliver(downloadingStatus());
        meter.begin(TransferProgress::Work::downloading);
        transport.downloadTree(
            "", 0, [this](const std::string& line) { worker.events.post(event::Activity{.text = line}); },
            [this](const std::string& path, const Fingerprint& fingerprint) {
                baseline.set(path, fingerprint);
                worker.events.post(event::Downloaded{.path = path, .fingerprint = fingerprint});
            });
        worker.control->check();
        worker.events.deliver(event::Baseline{baseline});
        worker.events.deliver(event::DownloadFinished{});
    }

    void poll() {
        try {
            worker.control->check();
            const FileMap current = scanFolder();
            const KeepAsPrevious keep{previous, current};
            synchronise(current);
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception& error) {
            const Failure failure = reasonOf(error);
            const bool isOfServer = failure.kind == Failure::Kind::transfer;
            waitToRetry(
                filesMissing ? Phase::filesMissing : Phase::waitingToRetry, failure,
                isOfServer ? changedPaths(previous, baseline).size() : 0);
            return;
        }
        worker.retryWait->reset();
        sleep(pollInterval);
    }

    FileMap scanFolder() {
        Mount found;
        filesMissing = false;
        FileMap current = scan(
            worker.profile,
            {.checkpoint = [this] { worker.control->check(); },
             .unusableName =
                 [this](std::string_view path, NameFault fault) { reportOnce(leftOutLine(fault, path), true); },
             .privateItems = worker.privateItems,
             .keptPrivate =
                 [this](std::string_view path, const PrivateItem& item) { reportOnce(leftOutText(path, item), false); },
             .mounted = [&found](const Mount& folder) { found = folder; }},
            previous.empty() ? baseline : previous);
        requireOwnDisk(found, current);
        return current;
    }

    // An unmounted disk must not count as a deletion of every file; and when it is back, other users may have changed
    // the server. The first scan has no earlier mount to compare with, so there an empty folder is enough.
    void requireOwnDisk(const Mount& found, const FileMap& current) {
        const bool other = mount && mount != found;
        const auto isThere = [&current](const auto& file) { return current.contains(file.path); };
        filesMissing = !mount && current.empty() && !worker.filesMayBeGone && expectsFiles();
        if (filesMissing) {
            diskWasAway = true;
            throw SyncError(missingFilesProblem(worker.profile.localFolder));
        }
        if (other && !baseline.empty() && std::ranges::none_of(baseline, isThere)) {
            diskWasAway = true;
            throw SyncError("Another disk, or none, is mounted at the local folder: none of the files that were "
                            "synchronised is in it. The server is left as it is.");
        }
        if (other || diskWasAway) {
            worker.events.deliver(event::FolderReturned{});
            throw Cancelled();
        }
        mount = found;
    }

    // Files that the user excluded from the profile meanwhile are not expected.
    [[nodiscard]] bool expectsFiles() const {
        return std::ranges::any_of(baseline, [this](const auto& file) {
            return worker.profile.includesInSync(file.path) && !worker.profile.excludes(file.path);
        });
    }

    void reportOnce(const std::string& line, bool error) {
        if (reported.emplace(line).second) activity(line, error);
    }

    void reportAlikeNames(const FileMap& current) {
        for (const auto& line : alikeNameLines(current, lookedThrough)) reportOnce(line, false);
        lookedThrough = current;
    }

    // One poll's work on what the scan found.
    void synchronise(const FileMap& current) {
        reportAlikeNames(current);
        const auto changed = changedPaths(current, baseline);
        const auto pending = static_cast<std::int64_t>(changed.size());
        uploads.keepFailuresOf(changed);
        uploads.tryNow(worker.retryWait->takeWokenFiles());
        uploads.queryMissingDates();
        if (changed.empty()) {
            uploads.doneInBurst = 0;
            worker.events.deliver(watchingStatus());
            uploads.recordContentsOfPublished(recordingTimeOfPoll);
        } else {
            sendStable(changed, current, pending);
        }
        uploads.reportRefused();
        forgetDeleted(current);
        pollsAtRest = changed.empty() ? pollsAtRest + 1 : 0;
        if (!changed.empty()) return;
        // Equal entries: when they are shared, the next poll compares them by address.
        baseline = current;
        // The check at the start and large batches leave some 100 bytes a file behind.
        if (pollsAtRest == 1) returnFreeMemory();
    }

    void sendStable(const std::vector<std::string>& changed, const FileMap& current, std::int64_t pending) {
        if (uploads.allWait(changed, current)) {
            showWaiting(current);
            return;
        }
        waitingShown = false;
        worker.events.deliver(queuedStatus(pending));
        const auto ready =
            uploads.withoutUnchanged(uploads.ready(stablePaths(changed, current, previous), current), current);
        if (!ready.empty()) uploads.send(ready, current, pending);
        showWaiting(current);
    }

    // A file that failed for a reason of its own does not delay other files.
    void showWaiting(const FileMap& current) {
        const auto failure = uploads.failure();
        if (!failure || std::exchange(waitingShown, true)) return;
        const auto waiting = static_cast<std::int64_t>(changedPaths(current, baseline).size());
        worker.events.deliver(event::Status{
            .phase = Phase::waitingToRetry,
            .detail = retryDetail(failure->failure.message, failure->left),
            .pending = waiting,
            .outlook = retryOutlook(failure->left),
            .failure = failure->failure,
            .retryAt = worker.clock.now() + failure->left});
    }

    void forgetDeleted(const FileMap& current) {
        std::set<std::string, std::less<>> deleted;
        baseline.forEachDifference(current, [&](std::string_view path, const Fingerprint*, const Fingerprint* now) {
            if (now == nullptr) deleted.emplace(path);
        });
        if (deleted.empty()) return;
        baseline.eraseIf([&](std::string_view path, const Fingerprint&) { return deleted.contains(path); });
        worker.events.deliver(event::Baseline{baseline});
    }

    // Why the work ended: the file that was being sent belongs to it.
    Failure reasonOf(const std::exception& error) {
        Failure failure = failureOf(error);
        if (auto ofServer = uploads.takeServerFailure()) failure = *std::move(ofServer);
        if (filesMissing) failure.kind = Failure::Kind::filesMissing;
        return failure;
    }

    void waitToRetry(Phase phase, const Failure& failure, std::size_t waiting) {
        activity(failure.message, true, failure);
        const auto delay = worker.retryWait->delay();
        worker.events.deliver(event::Status{
            .phase = phase,
            .detail = retryDetail(failure.message, delay),
            .outlook = retryOutlook(delay),
            .failure = failure,
            .retryAt = worker.clock.now() + delay,
            .waiting = static_cast<std::int64_t>(waiting)});
        if (!worker.retryWait->sleep(worker.clock, stop)) throw Cancelled();
    }

    void sleep(std::chrono::seconds duration) const {
        if (!worker.clock.sleep(stop, duration)) throw Cancelled();
    }

    void status(Phase phase, std::string detail, std::int64_t pending) const {
        worker.events.deliver(event::Status{.phase = phase, .detail = std::move(detail), .pending = pending});
    }

    void activity(std::string text, bool error, std::optional<Failure> failure = std::nullopt) const {
        worker.events.deliver(event::Activity{.text = std::move(text), .error = error, .failure = std::move(failure)});
    }

    const SyncWorker& worker;
    const std::stop_token& stop;
    ProgressMeter meter;
    const FTPTransport transport;
    FileMap baseline;
    FileMap previous;
    std::optional<Mount> mount; // of the local folder
    bool diskWasAway = false;
    bool filesMissing = false; // in the latest scan
    UploadQueue uploads;
    int pollsAtRest = 0;       // in a row, without a changed file
    bool waitingShown = false; // the status says why files wait
    FileMap lookedThrough;     // for names that are alike
    std::set<std::string, std::less<>> reported;
};

} // namespace

std::string retryDetail(const std::string& problem, std::chrono::seconds delay) {
    return sentence(problem) + " " + retryOutlook(delay);
}

std::string retryOutlook(std::chrono::seconds delay) {
    return "Retrying in " + std::to_string(delay.count()) + " seconds.";
}

std::string missingFilesProblem(const std::string& localFolder) {
    return "None of the synchronised files is there: the local folder " + printable(localFolder)
           + " is empty. Perhaps its disk is not mounted. Nothing is uploaded or forgotten until there are files in it "
             "again.";
}

event::Status watchingStatus() {
    return {.phase = Phase::watching, .detail = "Local changes upload automatically. Checking every 2 seconds."};
}

event::Status queuedStatus(std::int64_t pending) {
    return {.phase = Phase::queued, .detail = "Waiting for files to finish saving…", .pending = pending};
}

event::Status uploadingStatus(std::string path, std::int64_t pending) {
    return {.phase = Phase::uploading, .detail = std::move(path), .pending = pending};
}

event::Status downloadingStatus() {
    return {.phase = Phase::downloading, .detail = "Copying server files into your local folder…"};
}

std::vector<std::string> changedPaths(const FileMap& current, const FileMap& baseline) {
    std::vector<std::string> changed;
    current.forEachDifference(baseline, [&](std::string_view path, const Fingerprint* now, const Fingerprint* then) {
        if (now != nullptr && (then == nullptr || isOtherVersion(*now, *then))) changed.emplace_back(path);
    });
    std::sort(changed.begin(), changed.end());
    return changed;
}

std::vector<std::string> stablePaths(
    const std::vector<std::string>& changed, const FileMap& current, const FileMap& previous) {
    std::vector<std::string> stable;
    for (const auto& path : changed) {
        const auto* before = previous.find(path);
        if (before != nullptr && *before == current.at(path)) stable.push_back(path);
    }
    return stable;
}

void SyncWorker::pass(const std::stop_token& stop) const {
    try {
        WorkerRun(*this, stop).pass();
    } catch (const Cancelled&) {
        // Stopped: nothing is reported.
    }
}

void SyncWorker::run(const std::stop_token& stop) const {
    try {
        WorkerRun(*this, stop).run();
    } catch (const Cancelled&) {
        // Stopped: nothing is reported.
    }
}

} // namespace zembrastel
