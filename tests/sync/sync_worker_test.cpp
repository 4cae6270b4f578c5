#include "model/error.h"
#include "support/fake_clock.h"
#include "support/local_site.h"
#include "support/wait_for.h"
#include "sync/sync_worker.h"
#include "sync/upload_queue.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

unsigned otherMount = 0; // 1 while another disk, or none, is mounted at the local folder

} // namespace

extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* result) noexcept {
    const long status = ::syscall(SYS_statx, folder, path, flags, mask, result);
    result->stx_mnt_id += otherMount;
    return static_cast<int>(status);
}

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};

const std::string watching = "Watching | Local changes upload automatically. Checking every 2 seconds. | 0";

std::string queued(int count) {
    return "Changes queued | Waiting for files to finish saving… | " + std::to_string(count);
}

// Runs a worker on this thread; the test acts between its steps, while it sleeps.
class SyncWorkerTest : public ::testing::Test {
protected:
    using Between = std::function<void(std::size_t sleeps)>;

    // Runs until the given number of sleeps has begun. `between` is called in each, counted from 1.
    void run(std::size_t sleeps, const Between& between = {}) { run(sleeps, clock, between); }

    void run(std::size_t sleeps, testing::FakeClock& used, const Between& between = {}) {
        std::stop_source stop;
        const std::size_t before = used.sleeps().size();
        std::size_t count = 0;
        used.onSleep = [&](std::chrono::nanoseconds) {
            ++count;
            if (between) between(count);
            if (count == sleeps) stop.request_stop();
            return count < sleeps;
        };
        events.clear();
        const auto applied = [this](const WorkerEvent& event) { take(event); };
        const EventSink sink{.deliver = applied, .post = applied, .progress = progress};
        const SyncWorker worker = workerWith(sink, used);
        if (once) {
            worker.pass(stop.get_token());
        } else {
            worker.run(stop.get_token());
        }
        waits.clear();
        const auto all = used.sleeps();
        for (std::size_t i = before; i < all.size(); ++i)
            waits.push_back(std::chrono::round<std::chrono::seconds>(all[i]));
    }

    SyncWorker workerWith(const EventSink& sink, Clock& used) const {
        return {
            .profile = site.profile,
            .password = site.password,
            .control = std::make_shared<TransferControl>(),
            .initialBaseline = baseline,
            .events = sink,
            .clock = used,
            .seen = seen,
            .recordedDates = dates,
            .filesMayBeGone = filesMayBeGone};
    }

    // Replaces the fixture's own server.
    void useServer(const FtpServer& other) {
        site.profile = testing::profileFor(other, site.root(), other.remoteFolder("site"));
        site.password = other.password();
    }

    // Applies the event as the model does, and notes it in a short form.
    void take(const WorkerEvent& taken) {
        const auto text = Overloaded{
            [](const event::Status& status) {
                return std::string(factsOf(status.phase).title) + " | " + status.detail + " | "
                       + std::to_string(status.pending);
            },
            [this](const event::FilesRefused& event) {
                refused = event.failures;
                return "files refused: " + std::to_string(refused.size());
            },
            [](const event::Activity& activity) { return (activity.error ? "error: " : "line: ") + activity.text; },
            [this](const event::Uploaded& uploaded) {
                baseline.set(uploaded.path, uploaded.fingerprint);
                return "uploaded " + uploaded.path;
            },
            [this](const event::ContentsUnchanged& event) {
                for (const auto& [path, fingerprint] : event.files) baseline.set(path, fingerprint);
                return "unchanged: " + std::to_string(event.files.size());
            },
            [this](const event::Baseline& whole) {
                baseline = whole.files;
                return "baseline of " + std::to_string(baseline.size());
            },
            [this](const event::Downloaded& got) {
                baseline.set(got.path, got.fingerprint);
                return "downloaded " + got.path;
            },
            [this](const event::RemoteDate& date) {
                dates.set(date.path, date.date);
                return "date of " + date.path;
            },
            [](const event::DownloadFinished&) { return std::string("download finished"); },
            [](const event::FolderReturned&) { return std::string("folder returned"); },
            [](const event::ServerChanged&) { return std::string("server changed"); },
            [](const event::PassEnded& ended) {
                return "pass ended: " + (ended.failure ? ended.failure->message : "well");
            }};
        events.push_back(std::visit(text, taken));
    }

    std::size_t count(const std::string& event) const {
        return static_cast<std::size_t>(std::count(events.begin(), events.end(), event));
    }

    std::string onServer(const std::string& path) const { return testing::readFile(server.root() / "site" / path); }

    FtpServer server{FtpServer::Kind::vsftpd};
    LocalSite site{server};
    testing::FakeClock clock;
    std::function<void(const TransferProgress&)> progress; // of the worker
    bool once = false;                                     // one pass instead of watching
    bool filesMayBeGone = false;
    FileMap baseline;    // as a model would keep it: carried from run to run
    RemoteDates dates;   // likewise
    ServerVersions seen; // by a server check
    std::vector<std::string> events;
    std::vector<Failure> refused;
    std::vector<std::chrono::seconds> waits;
};

TEST_F(SyncWorkerTest, StableFilesAreUploadedOnceInOrder) {
    testing::writeTree(site.root(), {{"b", "2"}, {"a/x", "1"}});
    run(3);
    EXPECT_EQ(
        events, (std::vector<std::string>{
                    queued(2), queued(2), "Uploading | a/x | 2", "Uploading | b | 2", "uploaded a/x", "date of a/x",
                    "uploaded b", "date of b", watching}));
    EXPECT_EQ(waits, (std::vector<std::chrono::seconds>{2s, 2s, 2s}));
    EXPECT_EQ(testing::readTree(server.root() / "site"), site.files());
    run(2);
    EXPECT_EQ(events, (std::vector<std::string>{watching, watching}));
    testing::writeFile(site / "b", "changed while closed");
    run(2);
    EXPECT_EQ(onServer("b"), "changed while closed");
    EXPECT_EQ(count("uploaded a/x"), 0U);
}

TEST_F(SyncWorkerTest, FileBeingWrittenIsNotUploaded) {
    run(14, [&](std::size_t sleep) {
        // Of another size each time: two of them may have one date.
        if (sleep <= 10) testing::writeFile(site / "page", std::string(sleep, 'x'));
    });
    EXPECT_EQ(count("uploaded page"), 1U);
    EXPECT_EQ(onServer("page"), std::string(10, 'x'));
    EXPECT_EQ(count(queued(1)), 11U);

    // An atomic save: another inode, whatever the size and time.
    run(4, [&](std::size_t sleep) {
        if (sleep != 1) return;
        testing::writeFile(site / ".page.swp", std::string(10, 'y'));
        fs::last_write_time(site / ".page.swp", fs::last_write_time(site / "page"));
        fs::rename(site / ".page.swp", site / "page");
    });
    EXPECT_EQ(count("uploaded page"), 1U);
    EXPECT_EQ(onServer("page"), std::string(10, 'y'));
}

TEST_F(SyncWorkerTest, PassAlwaysEnds) {
    once = true;
    testing::writeTree(site.root(), {{"a", "1"}, {"log", ""}});
    run(1000, [&](std::size_t sleep) { testing::writeFile(site / "log", std::string(sleep, 'x')); });
    EXPECT_EQ(events.back(), "pass ended: Some files did not stop changing.");
    EXPECT_EQ(count("uploaded a"), 1U);
    EXPECT_EQ(count("uploaded log"), 0U);
    EXPECT_EQ(waits.size(), static_cast<std::size_t>(maxScans));
    run(1000);
    EXPECT_EQ(events.back(), "pass ended: well");
    EXPECT_EQ(testing::readTree(server.root() / "site"), site.files());

    server.stop();
    testing::writeFile(site / "a", "changed");
    run(1000);
    EXPECT_TRUE(events.back().starts_with("pass ended: curl: (7) ")) << events.back();
    EXPECT_EQ(waits, (std::vector<std::chrono::seconds>{2s})); // no retry
}

TEST_F(SyncWorkerTest, LocalDeletionKeepsTheServerCopy) {
    testing::writeTree(site.root(), {{"a", "1"}, {"b", "2"}});
    run(2);
    fs::remove(site / "a");
    run(2);
    EXPECT_EQ(events, (std::vector<std::string>{watching, "baseline of 1", watching}));
    EXPECT_EQ(onServer("a"), "1");
}

TEST_F(SyncWorkerTest, EmptyFolderAtTheStartForgetsNothing) {
    const auto empty = [this] {
        for (const char* name : {"a", "b"}) fs::remove(site / name);
    };
    const auto fill = [this] { testing::writeTree(site.root(), {{"a", "1"}, {"b", "2"}}); };
    fill();
    run(2);
    const FileMap known = baseline;
    empty();
    run(4, [&](std::size_t sleep) {
        if (sleep == 3) fill();
    });
    const std::string problem = "None of the synchronised files is there: the local folder " + site.root().string();
    EXPECT_TRUE(events.front().starts_with("error: " + problem)) << events.front();
    EXPECT_TRUE(events[1].starts_with("Waiting to retry | " + problem)) << events[1];
    EXPECT_EQ(events.back(), "folder returned"); // others may have changed the server meanwhile
    EXPECT_EQ(waits, (std::vector<std::chrono::seconds>{5s, 10s, 20s}));

    empty();
    once = true;
    run(5);
    EXPECT_TRUE(events.back().starts_with("pass ended: None of the synchronised files is there")) << events.back();
    EXPECT_EQ(baseline, known);

    once = false;
    struct Case {
        const char* what;
        std::function<void()> make;
    };
    for (const auto& [what, make] : std::vector<Case>{
             {"the user confirmed it", [&] { filesMayBeGone = true; }},
             {"no file may be there",
              [&] {
                  filesMayBeGone = false;
                  site.profile.exclusions = Exclusions("a\nb");
              }},
             {"another file is there", [&] { testing::writeFile(site / "other", "1"); }}}) {
        make();
        baseline = known;
        run(1);
        EXPECT_EQ(count("baseline of 0"), 1U) << what;
        site.profile.exclusions = Exclusions();
    }
    EXPECT_EQ(onServer("a"), "1");
}

TEST_F(SyncWorkerTest, UnmountedDiskIsNoDeletion) {
    testing::writeTree(site.root(), {{"a", "1"}});
    run(4, [&](std::size_t sleep) {
        if (sleep == 2) {
            otherMount = 1;
            fs::rename(site / "a", site.root().string() + ".away");
        } else if (sleep == 3) {
            otherMount = 0;
            fs::rename(site.root().string() + ".away", site / "a");
        }
    });
    EXPECT_EQ(
        count("error: Another disk, or none, is mounted at the local folder: none of the files that were synchronised "
              "is in it. The server is left as it is."),
        1U);
    EXPECT_EQ(events.back(), "folder returned"); // others may have changed the server meanwhile
    EXPECT_TRUE(baseline.contains("a"));
}

TEST(UploadProblem, NamesTheFileOnce) {
    struct Case {
        const char* failure;
        const char* message;
    };
    for (const auto& [failure, message] :
         {Case{"curl: (25) Failed FTP upload: 553", "curl: (25) Failed FTP upload: 553 (a/x)"},
          Case{
              "curl: (28) Operation timed out after 600001 milliseconds with 0 bytes received",
              "curl: (28) Operation timed out after 600001 milliseconds before the upload was complete (a/x)"},
          Case{
              "File changed before uploading; it will be retried.",
              "File changed before uploading; it will be retried (a/x)."},
          Case{"/site/a/x: Permission denied", "/site/a/x: Permission denied"},
          Case{
              "There is no room for a copy of a/x to upload from.",
              "There is no room for a copy of a/x to upload from."}}) {
        EXPECT_EQ(uploadProblem(failure, "a/x"), message);
    }
    EXPECT_EQ(retryDetail("No such file or directory", 5s), "No such file or directory. Retrying in 5 seconds.");
}

TEST_F(SyncWorkerTest, UnreachableServerIsRetriedWithPauses) {
    testing::writeFile(site / "page", "new");
    server.stop();
    run(9, [&](std::size_t sleep) {
        if (sleep == 7) server.restart();
    });
    EXPECT_EQ(waits, (std::vector<std::chrono::seconds>{2s, 5s, 10s, 20s, 40s, 60s, 60s, 2s, 2s}));
    const auto retry = std::find_if(events.begin(), events.end(), [](const auto& event) {
        return event.starts_with("Waiting to retry | curl: (7)");
    });
    ASSERT_NE(retry, events.end());
    EXPECT_TRUE(retry->ends_with(" Retrying in 5 seconds. | 0")) << *retry;
    EXPECT_TRUE(std::prev(retry)->starts_with("error: curl: (7)"));
    EXPECT_EQ(onServer("page"), "new");

    // A successful poll resets the waits. A missing local folder is no deletion.
    fs::rename(site.root(), site.root().string() + ".away");
    run(4, [&](std::size_t sleep) {
        if (sleep == 2) fs::rename(site.root().string() + ".away", site.root());
    });
    EXPECT_EQ(waits, (std::vector<std::chrono::seconds>{5s, 10s, 2s, 2s}));
    EXPECT_EQ(count("error: The local folder is unavailable or unreadable."), 2U);
    EXPECT_EQ(baseline.size(), 1U);
}

TEST_F(SyncWorkerTest, InterruptedInitialDownloadIsRetried) {
    server.put("site/a", "1");
    server.put("site/sub/b", "2");
    site.profile.needsDownload = true;
    run(1);
    EXPECT_EQ(
        events, (std::vector<std::string>{
                    "Needs download selection | Choose the initial download files and folders before starting. "
                    "Open Edit profile, choose the contents, and save your selection. | 0"}));
    EXPECT_TRUE(waits.empty());

    site.profile.initialDownloadSelection = DownloadSelection::everything();
    server.stop();
    run(2, [&](std::size_t sleep) {
        if (sleep == 1) server.restart();
    });
    EXPECT_EQ(waits, (std::vector<std::chrono::seconds>{5s, 2s}));
    const std::string downloading = "Downloading | Copying server files into your local folder… | 0";
    ASSERT_GE(events.size(), 3U);
    EXPECT_EQ(events[0], downloading);
    EXPECT_TRUE(events[2].starts_with("Retrying download | curl: (7)")) << events[2];
    EXPECT_EQ(
        std::vector<std::string>(events.begin() + 3, events.end()),
        (std::vector<std::string>{
            downloading, "line: Downloading a", "downloaded a", "line: Downloading sub/b", "downloaded sub/b",
            "baseline of 2", "download finished", "line: Initial download complete. Watching for local changes.",
            watching}));
}

TEST_F(SyncWorkerTest, InvalidNameIsReportedOnce) {
    testing::writeTree(site.root(), {{"caf\xe9", "x"}, {"page", "x"}, {"Page", "x"}});
    run(3);
    EXPECT_EQ(count("error: Left out, because its name is not valid UTF-8: caf\\xE9"), 1U);
    EXPECT_EQ(
        count("line: Names that differ only in case or in the form of accents can be one file on the server: "
              "Page, page"),
        1U);
    EXPECT_EQ(count("uploaded page"), 1U);
}

// Its sleeps take minutes, so that only a stop can end one soon.
class SlowClock final : public testing::FakeClock {
public:
    [[nodiscard]] bool sleep(const std::stop_token& stop, std::chrono::nanoseconds duration) override {
        return systemClock().sleep(stop, 100 * duration);
    }
};

TEST_F(SyncWorkerTest, StopEndsAWorkerAtOnce) {
    std::atomic<int> delivered = 0;
    const EventSink counting{.deliver = [&](const WorkerEvent&) { ++delivered; }, .post = [](const WorkerEvent&) {}};
    SlowClock slowClock;
    const SyncWorker worker = workerWith(counting, slowClock);
    std::jthread thread([&worker](const std::stop_token& stop) { worker.run(stop); });
    EXPECT_TRUE(testing::eventually([&] { return delivered > 0; })); // it waits for the next poll
    const auto stopped = std::chrono::steady_clock::now();
    thread.request_stop();
    thread.join();
    EXPECT_LT(std::chrono::steady_clock::now() - stopped, testing::atOnce);
}

// The real time, for the rate of a transfer; its sleeps take none.
class RealTimeClock final : public testing::FakeClock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override {
        return std::chrono::steady_clock::now();
    }
};

TEST_F(SyncWorkerTest, ProgressOfASlowUploadIsReported) {
    constexpr std::uint64_t size = 12'000'000; // twice the buffers of both ends of a connection
    const FtpServer slow(FtpServer::Kind::vsftpd, {.rateKiB = 2000});
    useServer(slow);
    testing::writeFile(site / "video", testing::randomBytes(size));
    std::vector<std::uint64_t> sent;
    progress = [&](const TransferProgress& now) {
        if (!now.file) return;
        EXPECT_EQ(count("uploaded video"), 0U);
        EXPECT_EQ(now.file->path, "video");
        EXPECT_EQ(now.file->size, size);
        EXPECT_GT(now.file->rate.value_or(1), 0);
        sent.push_back(now.file->bytes);
    };
    RealTimeClock realTime;
    run(3, realTime);
    ASSERT_GE(sent.size(), 3U);
    EXPECT_TRUE(std::ranges::is_sorted(sent));
    EXPECT_LT(sent.front(), sent.back());
    EXPECT_LE(sent.back(), size);
}

// Each reading takes 50 milliseconds.
class FastClock final : public testing::FakeClock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override {
        return FakeClock::steadyNow() + ++readings * 50ms;
    }

private:
    mutable int readings = 0;
};

TEST_F(SyncWorkerTest, SmallFilesCountWhenLive) {
    constexpr std::size_t many = 200;
    for (std::size_t i = 0; i < many; ++i) testing::writeFile(site / ("page" + std::to_string(i)), "four");
    std::uint64_t bytes = 0, reports = 0;
    progress = [&](const TransferProgress& now) {
        ++reports;
        const auto isUpload = [](const std::string& event) { return event.starts_with("uploaded "); };
        EXPECT_EQ(now.filesDone, static_cast<std::uint64_t>(std::ranges::count_if(events, isUpload)));
        EXPECT_EQ(now.filesQueued, many);
        EXPECT_EQ(now.bytesQueued, 4 * many);
        EXPECT_GE(now.bytes, std::max<std::uint64_t>(bytes, 4 * now.filesDone));
        EXPECT_LE(bytes = now.bytes, 4 * many);
        EXPECT_FALSE(now.file);
    };
    run(3); // on a clock that stands still
    EXPECT_EQ(reports, 0U) << "over within a second";
    baseline = {};
    FastClock fast;
    run(3, fast);
    EXPECT_GT(reports, 0U);
    EXPECT_EQ(baseline.size(), many);
}

} // namespace
} // namespace zembrastel
