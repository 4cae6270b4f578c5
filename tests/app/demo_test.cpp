#include "app/app_model.h"
#include "app/context/main_queue.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"
#include "support/work_off.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

namespace zembrastel::testing {
namespace {

class Diary final : public ModelObserver {
public:
    void activityLogged(const Uuid&, const Activity& line) override {
        if (line.kind == Activity::Kind::uploaded) uploads.push_back(line.text);
    }

    std::vector<std::string> uploads; // the oldest first
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
                       .demonstration = demonstration(clock),
                       .passwordAccess = {
                           .save = [refuse](const std::string&, const Uuid&) { refuse(); },
                           .read =
                               [refuse](const Uuid&) {
                                   refuse();
                                   return std::string();
                               },
                           .remove = [refuse](const Uuid&) { refuse(); }},
                       .clock = clock});
        diary = std::make_unique<Diary>();
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

TEST_F(Demo, APauseStopsItAndResumingGoesOnWhereItWas) {
    model->start(id);
    ASSERT_TRUE(uploads(40));
    const std::vector<std::string> unbroken(diary->uploads.begin(), diary->uploads.begin() + 40);

    begin();
    model->start(id);
    for (std::size_t count = 3; count <= 40; count += 3) {
        ASSERT_TRUE(uploads(count));
        model->toggle(id);
        EXPECT_FALSE(model->running(id) || status().active());
        EXPECT_EQ(status().title(), "Paused");
        const auto heard = diary->uploads;
        ASSERT_TRUE(workOff(queue));
        EXPECT_EQ(diary->uploads, heard) << "a paused profile reports no more";
        EXPECT_EQ(status().title(), "Paused");
        model->toggle(id);
    }
    ASSERT_TRUE(uploads(40));
    EXPECT_EQ(std::vector(diary->uploads.begin(), diary->uploads.begin() + 40), unbroken);
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
