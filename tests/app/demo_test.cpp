#include "app/app_model.h"
#include "app/context/main_context.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"
#include "support/work_off.h"

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

class Demo : public ::testing::Test, private ModelObserver {
protected:
    Demo() {
        setenv("XDG_DATA_HOME", folder.path().c_str(), 1); // for a model that opens a state folder
        begin();
    }

    void begin() {
        uploaded.clear();
        const auto refuse = [](const auto&...) -> std::string {
            ADD_FAILURE() << "the secret store was called";
            return "";
        };
        model = std::make_unique<AppModel>(
            queue, AppModel::Options{
                       .demonstration = demonstration(clock),
                       .passwordAccess = {.save = refuse, .read = refuse, .remove = refuse},
                       .clock = clock});
        model->observe(*this);
        id = model->profiles().front().id;
        model->startEnabled();
    }

    void activityLogged(const Uuid&, const Activity& line) override {
        if (line.kind == Activity::Kind::uploaded) uploaded.push_back(line.path);
    }

    [[nodiscard]] bool uploads(std::size_t count) {
        return queue.runUntil([&] { return uploaded.size() >= count; }, std::chrono::seconds(30));
    }

    TemporaryFolder folder;
    FakeClock clock;
    MainQueue queue;
    std::vector<std::string> uploaded; // the oldest first
    std::unique_ptr<AppModel> model;
    Uuid id;
};

TEST_F(Demo, PausedProfileContinuesWhereItStopped) {
    ASSERT_TRUE(uploads(40));
    const std::vector<std::string> unbroken(uploaded.begin(), uploaded.begin() + 40);
    begin();
    for (std::size_t count = 3; count <= 40; count += 3) {
        ASSERT_TRUE(uploads(count));
        model->toggle(id);
        const auto heard = uploaded;
        ASSERT_TRUE(workOff(queue));
        EXPECT_EQ(uploaded, heard) << "a paused profile reports no more";
        EXPECT_EQ(model->status(id).phase, Phase::paused);
        model->toggle(id);
    }
    ASSERT_TRUE(uploads(40));
    EXPECT_EQ(std::vector(uploaded.begin(), uploaded.begin() + 40), unbroken);
}

TEST_F(Demo, NothingReachesDiskServerOrSecretStore) {
    const auto pageFaultsOfChildren = [] {
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        return usage.ru_minflt;
    };
    const auto before = pageFaultsOfChildren();
    ASSERT_TRUE(uploads(5));
    Profile second = *model->profile(id);
    second.id = Uuid::random();
    second.localFolder = "/Users/you/Projects/second";
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
