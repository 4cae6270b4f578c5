#include "app/state_saver.h"

#include "app/context/main_queue.h"
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

TEST_F(StateSaverTest, WriteUnderWayNeverUndoesWhatTheUserSavedAfterIt) {
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

TEST_F(StateSaverTest, ReportThatCouldNotBeWrittenIsToldAndSavedWhenThatIsPossible) {
    const auto file = folder / "state/profiles.json";
    std::filesystem::create_directories(file / "in the way");
    saver.saveSoon(id());
    EXPECT_THROW(saver.save(), std::exception) << "by the user, who takes the report along";
    EXPECT_TRUE(failures.empty()) << "the user is told by the exception";
    saver.flush();
    EXPECT_EQ(failures.size(), 1U);
    std::filesystem::remove_all(file);
    ASSERT_TRUE(queue.runUntil([&] { return std::filesystem::exists(file); }, std::chrono::seconds(30)));
    EXPECT_EQ(store.load(), state);
    EXPECT_EQ(failures.size(), 1U);
}

TEST_F(StateSaverTest, RefusedSaveOfTheUserIsMadeUpForQuietly) {
    const auto file = folder / "state/profiles.json";
    std::filesystem::create_directories(file / "in the way");
    state.profiles.front().enabled = false;
    EXPECT_THROW(saver.save(), std::exception);
    std::filesystem::remove_all(file);
    ASSERT_TRUE(queue.runUntil([&] { return std::filesystem::exists(file); }, std::chrono::seconds(30)));
    EXPECT_EQ(store.load(), state);
    EXPECT_TRUE(failures.empty());
}

} // namespace
} // namespace zembrastel::testing
