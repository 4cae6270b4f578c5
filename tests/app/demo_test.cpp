#include "app/app_model.h"
#include "app/main_queue.h"
#include "model/error.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"
#include "support/work_off.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

namespace zembrastel::testing {
namespace {

// Everything that the model tells of one profile's status and log.
class Diary final : public ModelObserver {
public:
    explicit Diary(const AppModel& observed) : model(observed) {}

    void statusChanged(const Uuid& id) override {
        const ProfileStatus& status = model.status(id);
        if (titles.empty() || titles.back() != status.title) titles.push_back(status.title);
        pending.insert(status.pending);
    }
    void activityLogged(const Uuid&, const Activity& line) override {
        if (line.text.starts_with("Uploaded ")) uploads.push_back(line.text);
    }

    void progressChanged(const Uuid& id) override {
        if (const auto& progress = model.status(id).progress; progress && progress->file) seenMoving = true;
    }

    std::vector<std::string> titles;
    bool seenMoving = false; // a file
    std::set<std::int64_t> pending;
    std::vector<std::string> uploads; // the oldest first

private:
    const AppModel& model;
};

class Demo : public ::testing::Test {
protected:
    Demo() {
        setenv("XDG_DATA_HOME", folder.path().c_str(), 1); // where a model without a state folder would make one
        begin();
    }

    void begin() {
        model.reset();
        const auto refuse = [] { ADD_FAILURE() << "the secret store was called"; };
        model = std::make_unique<AppModel>(
            queue, AppModel::Options{
                       .demo = true,
                       .passwordAccess = {
                           .save = [refuse](const std::string&, const Uuid&) { refuse(); },
                           .read =
                               [refuse](const Uuid&) {
                                   refuse();
                                   return std::string();
                               },
                           .remove = [refuse](const Uuid&) { refuse(); }},
                       .clock = clock});
        diary = std::make_unique<Diary>(*model);
        model->observe(*diary);
        id = model->profiles().front().id;
    }

    [[nodiscard]] const ProfileStatus& status() const { return model->status(id); }

    [[nodiscard]] bool uploads(std::size_t count) {
        return queue.runUntil([&] { return diary->uploads.size() >= count; }, std::chrono::seconds(30));
    }

    TemporaryFolder folder;
    FakeClock clock;
    MainQueue queue;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<Diary> diary;
    Uuid id;
};

TEST_F(Demo, TheSampleHasAPastThatAddsUp) {
    ASSERT_EQ(model->profiles().size(), 1U);
    EXPECT_EQ(model->selection(), id);
    EXPECT_NO_THROW(model->checkSavable(model->profiles().front())) << "although its folder is on nobody's disk";
    const auto uploaded = std::ranges::count_if(
        status().activity, [](const Activity& line) { return line.text.starts_with("Uploaded "); });
    EXPECT_GE(uploaded, 5);
    EXPECT_EQ(status().uploaded, uploaded);
    const auto later = [](const Activity& a, const Activity& b) { return a.date > b.date; };
    EXPECT_TRUE(std::ranges::is_sorted(status().activity, later));
    EXPECT_LT(status().activity.front().date, clock.now());
    const auto last = std::ranges::find_if(
        status().activity, [](const Activity& line) { return line.text.starts_with("Uploaded "); });
    EXPECT_EQ(status().lastUpload, last->date);
}

TEST_F(Demo, WatchingComesToLifeStepByStep) {
    const auto before = status().uploaded;
    const auto since = clock.now();
    model->startEnabled();
    EXPECT_TRUE(status().active);
    ASSERT_TRUE(uploads(12));
    EXPECT_EQ(
        std::vector(diary->titles.begin(), diary->titles.begin() + 6),
        (std::vector<std::string>{
            "Starting", "Checking server", "Watching", "Changes queued", "Uploading", "Watching"}));
    EXPECT_TRUE(diary->seenMoving) << "a picture takes longer than a second";
    EXPECT_EQ(status().uploaded, before + 12);
    EXPECT_EQ(status().pending, 0);
    EXPECT_TRUE(diary->pending.contains(2) && diary->pending.contains(1));
    EXPECT_EQ(status().lastUpload, status().activity.front().date);
    EXPECT_GT(clock.now() - since, std::chrono::seconds(30)) << "nobody saves that fast";
    EXPECT_GE(std::set(diary->uploads.begin(), diary->uploads.end()).size(), 8U) << "always the same files";
}

TEST_F(Demo, APauseStopsItAndResumingGoesOnWhereItWas) {
    model->start(id);
    ASSERT_TRUE(uploads(40));
    const std::vector<std::string> unbroken(diary->uploads.begin(), diary->uploads.begin() + 40);

    begin();
    model->start(id);
    for (std::size_t count = 3; count <= 40; count += 3) {
        ASSERT_TRUE(uploads(count));
        model->toggle(id);
        EXPECT_FALSE(model->running(id) || status().active);
        EXPECT_EQ(status().title, "Paused");
        const auto heard = diary->uploads;
        ASSERT_TRUE(workOff(queue));
        EXPECT_EQ(diary->uploads, heard) << "a paused profile reports no more";
        EXPECT_EQ(status().title, "Paused");
        model->toggle(id);
    }
    ASSERT_TRUE(uploads(40));
    EXPECT_EQ(std::vector(diary->uploads.begin(), diary->uploads.begin() + 40), unbroken);
}

TEST_F(Demo, EditedContentsCountInTheDemonstrationToo) {
    Profile edited = model->profiles().front();
    edited.exclusions = Exclusions("css\nimages");
    model->save(edited, "secret"); // which starts it
    ASSERT_TRUE(uploads(30));
    for (const auto& line : diary->uploads) {
        EXPECT_FALSE(line.starts_with("Uploaded css/") || line.starts_with("Uploaded images/")) << line;
    }
    edited.host = "no host at all";
    EXPECT_THROW(model->save(edited, std::nullopt), SyncError);

    edited.host = "ftp.example.org";
    edited.initialDownloadSelection = DownloadSelection::everything();
    edited.needsDownload = true;
    model->save(edited, std::nullopt);
    diary->titles.clear();
    ASSERT_TRUE(queue.runUntil([&] { return status().title == "Uploading"; }, std::chrono::seconds(30)));
    EXPECT_EQ(diary->titles.front(), "Downloading");
    EXPECT_FALSE(model->profile(id)->needsDownload);
}

TEST_F(Demo, NothingIsWrittenStartedOrAskedOfTheSecretStore) {
    const auto pageFaultsOfChildren = [] {
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        return usage.ru_minflt;
    };
    const auto before = pageFaultsOfChildren();
    model->startEnabled();
    ASSERT_TRUE(uploads(5));
    Profile second;
    second.name = "Second";
    second.host = "localhost";
    second.username = "user";
    second.localFolder = "/Users/you/Projects/second";
    second.enabled = true;
    model->save(second, "secret");
    model->storePassword(second.id, "secret", [](const std::optional<std::string>& failure) { EXPECT_FALSE(failure); });
    model->retryCheck(id);
    model->startWithoutCheck(second.id);
    ASSERT_TRUE(uploads(15));
    model->remove(second.id);
    EXPECT_EQ(model->profiles().size(), 1U);
    EXPECT_FALSE(model->running(second.id));
    model.reset();
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process is there";
    EXPECT_EQ(pageFaultsOfChildren(), before) << "a child process was there";
}

} // namespace
} // namespace zembrastel::testing
