#include "app/state_saver.h"

#include "app/context/main_context.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

class StateSaverTest : public ::testing::Test {
protected:
    StateSaverTest() {
        state.profiles.emplace_back();
        for (int i = 0; i < 20000; ++i) addFile("file " + std::to_string(i)); // takes a while to write
    }

    void addFile(const std::string& path) { state.baselines[id()].set(path, {.size = 1, .modified = 2, .inode = 3}); }

    [[nodiscard]] const Uuid& id() const { return state.profiles.front().id; }

    TemporaryFolder folder;
    MainQueue queue;
    FakeClock clock;
    SavedState state;
    std::vector<std::string> failures;
    const StateStore store{folder / "state"};
    StateSaver saver{queue, clock, store, state, [this](const std::set<Uuid>&, const std::string& message) {
                         failures.push_back(message);
                     }};
};

TEST_F(StateSaverTest, SlowWriteNeverUndoesALaterSave) {
    saver.saveSoon(id());
    addFile("later");
    saver.save();
    EXPECT_EQ(store.load(), state);
    saver.saveSoon(id());
    addFile("last");
    saver.saveSoon(id());
    EXPECT_FALSE(store.load() == state) << "saved once more at once, and not what is gathered";
    ASSERT_TRUE(queue.runUntil([&] { return store.load() == state; }, std::chrono::seconds(30)));
    EXPECT_TRUE(failures.empty());
}

TEST_F(StateSaverTest, FailedWriteIsRepeatedAndReportedOnce) {
    const auto file = folder / "state/profiles.json";
    const auto isSavedLater = [&] {
        std::filesystem::remove_all(file);
        return queue.runUntil([&] { return std::filesystem::exists(file); }, std::chrono::seconds(30))
               && store.load() == state;
    };
    std::filesystem::create_directories(file / "in the way");
    state.profiles.front().enabled = false;
    EXPECT_THROW(saver.save(), std::exception);
    EXPECT_TRUE(isSavedLater());
    EXPECT_TRUE(failures.empty()) << "the exception informs the user";

    std::filesystem::remove(file);
    std::filesystem::create_directories(file / "in the way");
    saver.saveSoon(id());
    EXPECT_THROW(saver.save(), std::exception) << "the save of the user includes the report";
    EXPECT_TRUE(failures.empty()) << "the exception informs the user";
    saver.flush();
    EXPECT_EQ(failures.size(), 1U);
    EXPECT_TRUE(isSavedLater());
    EXPECT_EQ(failures.size(), 1U);
}

} // namespace
} // namespace zembrastel::testing
