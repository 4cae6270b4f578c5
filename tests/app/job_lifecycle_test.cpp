#include "app/model_fixture.h"
#include "model/error.h"
#include "support/wait_for.h"

#include <filesystem>
#include <future>
#include <pthread.h>
#include <thread>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class JobLifecycle : public testing::ModelFixture {
protected:
    // A saved profile with a folder of its own, and no password at hand.
    Profile addUnknown(const std::string& folder) {
        Profile unknown = site.profile;
        unknown.id = Uuid::random();
        unknown.localFolder = stateFolder / folder;
        fs::create_directory(unknown.localFolder);
        model->save(unknown, std::nullopt);
        return unknown;
    }
};

TEST_F(JobLifecycle, UploadedFilesAreNotSentAgainAfterARestart) {
    testing::writeTree(site.root(), {{"index.html", "1"}, {"sub/page", "2"}});
    server.put("site/index.html", "old");
    testing::touch(server.root() / "site/index.html", std::chrono::sys_days(std::chrono::year(2001) / 1 / 1));
    // Remains of killed runs: half a download, and a working folder.
    testing::writeFile(site / ".zembrastel-01234567-89AB-CDEF-0123-456789ABCDEF.part", "half");
    const fs::path working = fs::temp_directory_path() / ("zembrastel-" + Uuid::random().text());
    fs::create_directory(working);
    fs::last_write_time(working, fs::file_time_type::clock::now() - 2h);
    withProfile().start(id());
    ASSERT_TRUE(uploads(2));
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_FALSE(fs::exists(working));
    EXPECT_EQ(testing::readTree(server.root() / "site"), site.files());
    EXPECT_EQ(logged("Uploaded sub/page"), 1U);
    EXPECT_EQ(logged("Watching started."), 1U);
    EXPECT_EQ(status().pending, 0);
    const FileMap uploaded{{"index.html", site.fingerprint("index.html")}, {"sub/page", site.fingerprint("sub/page")}};
    EXPECT_TRUE(runUntil([&] { return savedBaseline() == uploaded && savedDates().size() == 2; }));

    restart().start(id());
    ASSERT_TRUE(reaches(Phase::watching));
    ASSERT_TRUE(polls(4));
    EXPECT_EQ(status().uploaded, 0);
}

TEST_F(JobLifecycle, UploadThatAKillLeftUnsavedIsRecognised) {
    testing::writeFile(site / "page", "1");
    withProfile().start(id());
    ASSERT_TRUE(uploads(1));
    model.reset();
    const auto saved = testing::readFile(stateFolder / "state/profiles.json");
    testing::writeTree(site.root(), {{"a", "1"}, {"b", "1"}});
    restart().start(id());
    ASSERT_TRUE(uploads(2));
    model.reset();
    testing::writeFile(stateFolder / "state/profiles.json", saved); // as a kill would have left it
    testing::writeFile(site / "a", "edited");
    restart().start(id());
    ASSERT_TRUE(uploads(1)) << "the own upload counts as a colleague's";
    EXPECT_EQ(onServer("a"), "edited");
    EXPECT_TRUE(runUntil([&] { return savedBaseline().size() == 3; }));
}

TEST_F(JobLifecycle, StoppedWorkerEndsBeforeTheNextCheckBegins) {
    std::atomic<int> checks = 0;
    std::atomic<bool> isWorking = false;
    std::atomic<bool> isEnding = false;
    std::atomic<bool> overlapped = false;
    AppModel::Options how{.clock = clock};
    how.work.check = [&](const FTPTransport&, const ServerRecord&, const std::stop_token&) {
        ++checks;
        if (isEnding) overlapped = true;
        return ServerCheck{};
    };
    how.work.watch = [&](const SyncWorker&, const std::stop_token& stop) {
        isWorking = true;
        (void)testing::eventually([&] { return stop.stop_requested(); });
        if (checks > 1) return;
        isEnding = true;
        std::this_thread::sleep_for(300ms); // the last step
        isEnding = false;
    };
    withProfile();
    restart(how).start(id());
    ASSERT_TRUE(runUntil([&] { return logged("Watching started.") == 1; }));
    ASSERT_TRUE(testing::eventually([&] { return isWorking.load(); }));
    model->stopJob(id());
    ASSERT_TRUE(testing::eventually([&] { return isEnding.load(); }));
    model->start(id());
    ASSERT_TRUE(runUntil([&] { return logged("Watching started.") == 2; }));
    model.reset();
    EXPECT_FALSE(overlapped);
}

TEST_F(JobLifecycle, FailedCheckUploadsNothingAndRetriesOnWake) {
    clock.onSleep = [this, waits = 0](std::chrono::nanoseconds duration) mutable {
        if (duration < 5s) return true;
        queue.post([] {}); // runUntil() tests its condition again
        return ++waits < 4;
    };
    const auto retries = [this] {
        std::vector<std::chrono::nanoseconds> found;
        std::ranges::copy_if(clock.sleeps(), std::back_inserter(found), [](const auto& sleep) { return sleep >= 5s; });
        return found;
    };
    const auto waitsFor = [&](std::vector<std::chrono::nanoseconds> all) {
        return runUntil([&] { return retries().size() >= all.size(); }) && retries() == all;
    };
    testing::writeFile(site / "page", "new");
    server.stop();
    withProfile().start(id());
    ASSERT_TRUE(waitsFor({5s, 10s, 20s, 40s}));
    ASSERT_TRUE(reaches(Phase::checkFailed));
    EXPECT_TRUE(status().detail.ends_with(" Uploads remain paused; the check will retry automatically."));
    EXPECT_TRUE(model->checkFailures().at(id()).starts_with("curl: (7)"));
    const auto asleep = clock.steadyNow();
    model->retryNow();
    ASSERT_TRUE(waitsFor({5s, 10s, 20s, 40s, 5s}));
    EXPECT_EQ(clock.steadyNow(), asleep);

    // So does a worker, whose first wait does not continue those of the check.
    server.restart();
    model->retryNow();
    ASSERT_TRUE(uploads(1));
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_TRUE(model->checkFailures().empty());
    server.stop();
    testing::writeFile(site / "page", "newer");
    ASSERT_TRUE(waitsFor({5s, 10s, 20s, 40s, 5s, 5s}));
    ASSERT_TRUE(reaches(Phase::waitingToRetry));
    server.restart();
    model->retryNow();
    ASSERT_TRUE(uploads(2));
    EXPECT_EQ(onServer("page"), "newer");
    EXPECT_EQ(logged("Watching started."), 1U);
}

TEST_F(JobLifecycle, ImpossibleStartIsRefusedWithTheReason) {
    withProfile();
    auto other = site.profile;
    other.id = Uuid::random();
    fs::create_directory_symlink(site.root(), stateFolder / "spelled-otherwise");
    model->start(id());
    other.localFolder = stateFolder / "spelled-otherwise";
    EXPECT_EQ(
        testing::failureOf([&] { model->save(other, std::nullopt); }),
        "Another active profile already watches this local folder. Pause it before using this profile.");
    model->stopJob(id());
    model->save(other, std::nullopt);
    model->start(id());
    model->start(other.id);
    EXPECT_FALSE(model->running(other.id));
    EXPECT_EQ(model->status(other.id).phase, Phase::stopped);
    EXPECT_EQ(model->status(other.id).detail, "This folder is already being watched by another profile.");
    model->stopJob(id());

    auto state = saved();
    state.profiles[0].syncSelection = DownloadSelection{};
    state.profiles[1].needsDownload = true;
    for (auto& profile : state.profiles) profile.enabled = true;
    StateStore(stateFolder / "state").save(state);
    restart().startEnabled();
    EXPECT_EQ(status().phase, Phase::stopped);
    EXPECT_EQ(status().detail, "No files or folders are selected. Use Edit sync contents to choose what to sync.");
    EXPECT_EQ(model->status(other.id).phase, Phase::unchosen);
    EXPECT_TRUE(model->status(other.id).failed());
    for (const auto& profile : saved().profiles) EXPECT_FALSE(profile.enabled);
}

TEST_F(JobLifecycle, LatePasswordStartsNothingThatWasStopped) {
    std::promise<void> answer;
    passwords.read = [ready = answer.get_future().share()](const Uuid&) -> std::string {
        ready.wait();
        throw SyncError("Keychain: no answer.");
    };
    withProfile();
    const Profile stopped = addUnknown("stopped");
    model->start(stopped.id);
    model->startWithoutCheck(stopped.id);
    EXPECT_EQ(model->status(stopped.id).phase, Phase::starting);
    model->start(id()); // the password is at hand: needs no answer
    EXPECT_TRUE(reaches(Phase::watching));
    model->toggle(stopped.id);
    EXPECT_EQ(model->status(stopped.id).phase, Phase::paused);
    std::string answered;
    model->withPassword(
        stopped.id, [&](const std::string& password) { answered = password; }, [](const std::string&) {});
    model->keepForSession(stopped.id, "typed meanwhile");
    const Profile unknown = addUnknown("unknown");
    model->start(unknown.id);
    answer.set_value();
    ASSERT_TRUE(runUntil([&] { return model->status(unknown.id).failed(); }));
    EXPECT_EQ(model->status(unknown.id).phase, Phase::stopped);
    EXPECT_EQ(model->status(unknown.id).detail, "Keychain: no answer.");
    EXPECT_FALSE(model->running(unknown.id));
    EXPECT_EQ(answered, "typed meanwhile");
    EXPECT_FALSE(model->running(stopped.id));
}

TEST_F(JobLifecycle, MissingThreadForThePasswordIsReported) {
    restart();
    const Profile unknown = addUnknown("unknown");
    pthread_attr_t usual;
    pthread_attr_t unbounded;
    ASSERT_EQ(::pthread_getattr_default_np(&usual), 0);
    ASSERT_EQ(::pthread_getattr_default_np(&unbounded), 0);
    ASSERT_EQ(::pthread_attr_setstacksize(&unbounded, std::size_t(1) << 46), 0); // more than there are addresses
    ASSERT_EQ(::pthread_setattr_default_np(&unbounded), 0);
    model->start(unknown.id);
    ASSERT_EQ(::pthread_setattr_default_np(&usual), 0);
    ASSERT_TRUE(runUntil([&] { return model->status(unknown.id).failed(); }));
    EXPECT_TRUE(model->status(unknown.id).detail.starts_with("The secret store cannot be asked now: "))
        << model->status(unknown.id).detail;
    model->start(unknown.id); // asks again
    EXPECT_TRUE(runUntil([&] { return model->status(unknown.id).failed(); }));
    EXPECT_FALSE(model->status(unknown.id).detail.starts_with("The secret store cannot be asked now: "));
}

TEST_F(JobLifecycle, UnsavedStateIsReportedAndSavedLater) {
    testing::writeFile(site / "a", "1");
    withProfile();
    const auto file = stateFolder / "state/profiles.json";
    fs::rename(file, stateFolder / "aside");
    fs::create_directories(file / "in the way");
    auto enabled = site.profile;
    enabled.enabled = true;
    EXPECT_THROW(model->save(enabled, std::nullopt), std::exception);
    EXPECT_FALSE(model->running(id())) << "with settings that the next start would not find";
    EXPECT_TRUE(status().failed());
    model->start(id());
    ASSERT_TRUE(uploads(1));
    ASSERT_TRUE(runUntil([&] { return status().detail.starts_with("Could not save sync state: "); }));
    EXPECT_TRUE(status().unsaved);
    EXPECT_EQ(onServer("a"), "1");
    fs::remove_all(file);
    testing::writeFile(site / "b", "2");
    ASSERT_TRUE(uploads(2));
    model.reset();
    EXPECT_EQ(savedBaseline().size(), 2U);
}

} // namespace
} // namespace zembrastel
