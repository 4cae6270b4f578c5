#include "app/model_fixture.h"
#include "model/error.h"
#include "support/work_off.h"

#include <future>

namespace zembrastel {
namespace {

class ProfileOperations : public testing::ModelFixture {
protected:
    // Everything of two folders in sync and watched.
    void syncTwoFolders() {
        testing::writeTree(site.root(), {{"keep/a", "1"}, {"drop/b", "1"}});
        withProfile().toggle(id());
        ASSERT_TRUE(uploads(2));
        ASSERT_TRUE(runUntil([&] { return savedDates().size() == 2; }));
    }

    Profile edited() const { return *model->profile(id()); }
};

TEST_F(ProfileOperations, EditOfTheNameKeepsTheBaseline) {
    syncTwoFolders();
    auto profile = edited();
    profile.name = "  Renamed ";
    model->save(profile, "new password");
    EXPECT_EQ(edited().name, "Renamed");
    EXPECT_FALSE(edited().needsDownload);
    EXPECT_EQ(savedBaseline().size(), 2U);
    EXPECT_EQ(storedPasswords->at(id()), "new password");
    EXPECT_TRUE(model->running(id())) << "an enabled profile goes on";
}

TEST_F(ProfileOperations, AddedContentsAreComparedAfresh) {
    syncTwoFolders();
    auto profile = edited();
    profile.syncSelection = DownloadSelection{.rules = {{"keep", true}}};
    model->save(profile, std::nullopt);
    EXPECT_TRUE(edited().needsDownload);
    EXPECT_EQ(edited().initialDownloadSelection, profile.syncSelection);
    EXPECT_FALSE(model->baseline(id()).contains("drop/b"));
    EXPECT_FALSE(model->remoteDates(id()).contains("drop/b"));
    EXPECT_TRUE(model->baseline(id()).contains("keep/a"));
    EXPECT_EQ(testing::readFile(site / "drop/b"), "1");
    ASSERT_TRUE(reaches(Phase::watching));

    editOnServer("drop/b", "server edit", 1);
    profile = edited();
    profile.syncSelection = DownloadSelection::everything();
    model->save(profile, std::nullopt);
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_EQ(testing::readFile(site / "drop/b"), "server edit");
    EXPECT_EQ(site.backups(), (testing::FileTree{{"drop/b", "1"}}));

    profile = edited();
    profile.syncSelection = DownloadSelection{};
    model->save(profile, std::nullopt);
    EXPECT_FALSE(edited().enabled);
    EXPECT_FALSE(edited().needsDownload);
    EXPECT_FALSE(model->running(id()));
    EXPECT_EQ(status().phase, Phase::nothingSelected);
    EXPECT_EQ(status().detail, "Choose files or folders in Edit sync contents to resume syncing.");
}

TEST_F(ProfileOperations, RefusedSaveChangesNothing) {
    syncTwoFolders();
    const auto before = saved();
    auto profile = edited();
    profile.host = "ftp://example.org";
    EXPECT_NE(testing::failureOf([&] { model->save(profile, "x"); }), "");
    passwords.save = [](const auto&...) { throw SyncError("Keychain: locked."); };
    profile = edited();
    profile.name = "other";
    restart();
    EXPECT_EQ(testing::failureOf([&] { model->save(profile, "x"); }), "Keychain: locked.");
    EXPECT_EQ(saved(), before);
    EXPECT_EQ(edited(), before.profiles.front());
}

TEST_F(ProfileOperations, StoringAPasswordBlocksNothing) {
    std::promise<void> answer;
    passwords.save = [ready = answer.get_future().share(),
                      stored = storedPasswords](const std::string& password, const Uuid& id) {
        ready.wait();
        if (password.empty()) throw SyncError("Keychain: locked.");
        (*stored)[id] = password;
    };
    withProfile();
    const Uuid other = Uuid::random();
    std::vector<std::string> told;
    const auto note = [&told](const std::optional<std::string>& failure) {
        told.push_back(failure.value_or("stored"));
    };
    model->storePassword(other, "first", note);
    model->withPassword(
        other, [&told](const std::string& password) { told.push_back(password); }, note);
    model->storePassword(other, "", note);
    EXPECT_TRUE(told.empty());
    answer.set_value();
    ASSERT_TRUE(runUntil([&] { return told.size() == 3; }));
    EXPECT_EQ(told, (std::vector<std::string>{"stored", "first", "Keychain: locked."}));

    (*storedPasswords)[id()] = "of a profile that is there";
    model->removeStrayPassword(id());
    model->removeStrayPassword(other);
    ASSERT_TRUE(runUntil([&] { return storedPasswords->size() == 1; }));
    EXPECT_TRUE(storedPasswords->contains(id()));

    model->storePassword(other, "late", note);
    model.reset();
    ASSERT_TRUE(testing::workOff(queue));
    EXPECT_EQ(told.size(), 3U) << "no result once the model is gone";
}

} // namespace
} // namespace zembrastel
