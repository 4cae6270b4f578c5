#include "app/model_fixture.h"

#include <filesystem>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

class Review : public testing::ModelFixture {
protected:
    // Three files in sync, then closed; on the server two are changed, of which one is edited locally too, and a
    // further local edit waits.
    void changeBothSidesWhileClosed() {
        testing::writeTree(site.root(), {{"both", "1"}, {"theirs", "1"}, {"mine", "1"}});
        withProfile().start(id());
        ASSERT_TRUE(uploads(3));
        ASSERT_TRUE(runUntil([&] { return model->remoteDates(id()).size() == 3; }));
        model.reset();
        testing::writeFile(site / "both", "local edit");
        testing::writeFile(site / "mine", "local edit");
        editOnServer("both", "server edit", 1);
        editOnServer("theirs", "server edit", 1);
    }

    std::vector<std::string> offered() const {
        std::vector<std::string> paths;
        if (!model->reviews().contains(id())) return paths;
        for (const auto& change : model->reviews().at(id()).changes) paths.push_back(change.path);
        return paths;
    }
};

TEST_F(Review, EachFileGoesTheWayThatWasChosenForItAndLosesNothing) {
    changeBothSidesWhileClosed();
    restart().start(id());
    ASSERT_TRUE(reaches("Review remote changes"));
    EXPECT_EQ(
        model->status(id()).detail,
        "2 newer server files found. Uploads are paused until you choose which versions to keep.");
    model->resolveReview(id(), {"theirs"});
    EXPECT_FALSE(model->presentedReview());
    EXPECT_EQ(model->status(id()).title, "Downloading server changes");
    EXPECT_EQ(model->status(id()).detail, "Replacing 1 selected local files, with backups.");
    ASSERT_TRUE(uploads(2));
    EXPECT_EQ(onServer("both"), "local edit");
    EXPECT_EQ(testing::readFile(site / "theirs"), "server edit");
    EXPECT_EQ(site.backups(), (testing::FileTree{{"theirs", "1"}}));
}

TEST_F(Review, DecisionIsKeptByAProgramThatDoesNotWatch) {
    changeBothSidesWhileClosed();
    restart({.clock = clock, .watches = false}).start(id());
    ASSERT_TRUE(reaches("Review remote changes"));
    model->resolveReview(id(), {});
    EXPECT_FALSE(model->running(id()));
    EXPECT_EQ(model->status(id()).title, "Paused");
    EXPECT_EQ(onServer("mine"), "1");
    restart().start(id());
    EXPECT_TRUE(uploads(2));
}

TEST_F(Review, StayingPausedKeepsTheReviewAndConfirmingItLaterLooksAfresh) {
    changeBothSidesWhileClosed();
    restart().start(id());
    ASSERT_TRUE(reaches("Review remote changes"));
    model->pauseReview(id());
    EXPECT_EQ(offered(), (std::vector<std::string>{"both", "theirs"}));
    model->openReview(id());
    EXPECT_TRUE(model->presentedReview());
    editOnServer("mine", "meanwhile", 3);
    model->resolveReview(id(), {"both"});
    ASSERT_TRUE(reaches("Review remote changes"));
    EXPECT_EQ(offered().size(), 3U);
    EXPECT_EQ(testing::readFile(site / "both"), "local edit");
}

TEST_F(Review, FailedReviewDownloadStopsBeforeAnyUploadAndKeepsWhatWasDone) {
    changeBothSidesWhileClosed();
    restart().start(id());
    ASSERT_TRUE(reaches("Review remote changes"));
    testing::writeFile(site / "theirs", "edited during the review");
    model->resolveReview(id(), {"both", "theirs"});
    ASSERT_TRUE(reaches("Server check needs attention"));
    EXPECT_EQ(
        model->status(id()).detail,
        "theirs changed locally after the comparison. Review it again before replacing it. Uploads remain paused. "
        "Retry the server check to review the latest versions.");
    EXPECT_EQ(testing::readFile(site / "both"), "server edit");
    EXPECT_EQ(model->baseline(id()).at("both"), site.fingerprint("both"));
    EXPECT_EQ(testing::readFile(site / "theirs"), "edited during the review");
    EXPECT_EQ(onServer("mine"), "1");
}

TEST_F(Review, ReviewsOfSeveralProfilesComeUpOneAfterAnotherInOneOrder) {
    withProfile();
    std::vector<Uuid> ids;
    for (int i = 0; i < 2; ++i) {
        auto profile = site.profile;
        profile.id = Uuid::random();
        profile.localFolder = stateFolder / ("local" + std::to_string(i));
        testing::writeFile(fs::path(profile.localFolder) / "page", "1");
        ids.push_back(profile.id);
        (*storedPasswords)[profile.id] = site.password;
        model->save(profile, std::nullopt);
    }
    editOnServer("page", "server edit", 1);
    std::sort(ids.begin(), ids.end(), [](const Uuid& a, const Uuid& b) { return a.text() < b.text(); });
    model->start(ids[1]);
    ASSERT_TRUE(runUntil([&] { return model->presentedReview().has_value(); }));
    model->start(ids[0]);
    ASSERT_TRUE(runUntil([&] { return model->reviews().size() == 2; }));
    EXPECT_EQ(model->presentedReview()->id, ids[1]) << "one that is shown stays";
    model->resolveReview(ids[1], {});
    EXPECT_EQ(model->presentedReview()->id, ids[0]);
}

} // namespace
} // namespace zembrastel
