#include "app/model_fixture.h"

#include <filesystem>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

class Review : public testing::ModelFixture {
protected:
    // Three files in sync, then a restart; meanwhile two of them are changed on the server, and two are edited locally:
    // one of these two, and the third.
    void changeBothSides() {
        testing::writeTree(site.root(), {{"both", "1"}, {"theirs", "1"}, {"mine", "1"}});
        withProfile().start(id());
        ASSERT_TRUE(uploads(3));
        ASSERT_TRUE(runUntil([&] { return model->remoteDates(id()).size() == 3; }));
        model.reset();
        testing::writeFile(site / "both", "local edit");
        testing::writeFile(site / "mine", "local edit");
        editOnServer("both", "server edit", 1);
        editOnServer("theirs", "server edit", 1);
        restart();
    }

    void reviewBothSides() {
        changeBothSides();
        model->resume(id());
        ASSERT_TRUE(reaches(Phase::awaitingReview));
    }

    void expectReviewOfAllAndNothingDone(const std::string& third) {
        ASSERT_TRUE(reaches(Phase::awaitingReview));
        EXPECT_EQ(offered(), (std::vector<std::string>{"both", "mine", "theirs"}));
        EXPECT_TRUE(model->presentedReview());
        EXPECT_FALSE(model->watching(id()));
        EXPECT_EQ(status().uploaded, 0);
        EXPECT_EQ(onServer("mine"), third);
        EXPECT_EQ(onServer("both"), "server edit");
        EXPECT_EQ(testing::readFile(site / "both"), "local edit");
        EXPECT_EQ(testing::readFile(site / "theirs"), "1");
    }

    // With a date after any on the server.
    void editLater(const std::string& path) {
        testing::writeFile(site / path, "local edit");
        testing::touch(site / path, std::chrono::system_clock::now() + std::chrono::hours(5));
    }

    std::vector<std::string> offered() const {
        std::vector<std::string> paths;
        if (!model->reviews().contains(id())) return paths;
        for (const auto& change : model->reviews().at(id()).changes) paths.push_back(change.path);
        return paths;
    }
};

TEST_F(Review, ChosenVersionsWinAndLoseNothing) {
    reviewBothSides();
    EXPECT_EQ(
        status().detail, "2 newer server files found. Uploads are paused until you choose which versions to keep.");
    EXPECT_EQ(decide({"theirs"}), Decision::accepted);
    EXPECT_FALSE(model->presentedReview());
    EXPECT_EQ(status().phase, Phase::downloadingReview);
    EXPECT_EQ(status().detail, "Replacing 1 selected local files, with backups.");
    ASSERT_TRUE(uploads(2));
    EXPECT_EQ(onServer("both"), "local edit");
    EXPECT_EQ(testing::readFile(site / "theirs"), "server edit");
    EXPECT_EQ(site.backups(), (testing::FileTree{{"theirs", "1"}}));
}

TEST_F(Review, LeftFileStaysAwayUntilEverythingIsSent) {
    testing::writeTree(site.root(), {{"gone", "1"}, {"there", "1"}});
    withProfile().start(id());
    ASSERT_TRUE(uploads(2));
    ASSERT_TRUE(runUntil([&] { return model->remoteDates(id()).size() == 2; }));
    fs::remove(server.root() / "site/gone");
    restart().start(id());
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_EQ(model->missingOnServer(id()), PathSet{"gone"});
    model->leaveMissing(id());
    restart().start(id());
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_TRUE(model->missingOnServer(id()).empty());
    EXPECT_EQ(status().uploaded, 0);

    server.stop();
    model->sendAgain(id(), Resend::everything);
    ASSERT_TRUE(reaches(Phase::checkFailed));
    EXPECT_EQ(savedBaseline().size(), 2U) << "nothing is forgotten before the comparison";
    restart(); // the request outlives the program
    server.restart();
    model->start(id());
    ASSERT_TRUE(uploads(1));
    ASSERT_TRUE(reaches(Phase::watching));
    EXPECT_EQ(status().uploaded, 1) << "the other file is equal";
    EXPECT_EQ(onServer("gone"), "1");
    EXPECT_EQ(ResendRequest(stateFolder / "state", id()).read(), std::nullopt);
}

TEST_F(Review, DecisionIsKeptByAProgramThatDoesNotWatch) {
    changeBothSides();
    restart({.clock = clock, .watches = false}).start(id());
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    EXPECT_EQ(decide({}), Decision::accepted);
    EXPECT_FALSE(model->running(id()));
    EXPECT_EQ(status().phase, Phase::paused);
    EXPECT_EQ(onServer("mine"), "1");
    restart().start(id());
    EXPECT_TRUE(uploads(2));
}

// The harm: what a colleague changed after the postponed review is overwritten.
TEST_F(Review, LateDecisionOverwritesNothing) {
    reviewBothSides();
    editOnServer("mine", "meanwhile", 3);
    const RemoteReview late = stayPaused();
    model->openReview(id());
    model->start(id());
    EXPECT_FALSE(model->presentedReview()) << "the sheet closes with its review";
    EXPECT_EQ(status().phase, Phase::checking);
    EXPECT_EQ(model->resolveReview(id(), late.reviewId, {"theirs"}), Decision::outdated);
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    EXPECT_EQ(model->resolveReview(id(), late.reviewId, {}), Decision::outdated);
    model->pauseReview(id(), late.reviewId);
    expectReviewOfAllAndNothingDone("meanwhile");

    const RemoteReview next = stayPaused();
    editOnServer("mine", "even later", 4);
    EXPECT_EQ(decide({"both"}), Decision::accepted);
    expectReviewOfAllAndNothingDone("even later");
    EXPECT_NE(model->reviews().at(id()).reviewId, next.reviewId);
    EXPECT_TRUE(model->profile(id())->enabled);
}

TEST_F(Review, LateDecisionWhileWatchingStartsNoSecondWorker) {
    reviewBothSides();
    const RemoteReview late = stayPaused();
    for (const auto* path : {"both", "theirs"}) editOnServer(path, "server edit", -1); // no longer newer
    model->startWithoutCheck(id());
    ASSERT_TRUE(reaches(Phase::watching));
    ASSERT_TRUE(uploads(2));
    EXPECT_EQ(model->resolveReview(id(), late.reviewId, {"theirs"}), Decision::outdated);
    EXPECT_TRUE(model->watching(id()));
    EXPECT_EQ(logged("Watching started."), 1U);
    editOnServer("theirs", "a later edit", 3);
    model->retryCheck(id());
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    EXPECT_EQ(offered(), std::vector<std::string>{"theirs"});
    EXPECT_EQ(onServer("theirs"), "a later edit");
}

TEST_F(Review, PostponedDecisionResumesAndAsksNoSecondTime) {
    reviewBothSides();
    (void)stayPaused();
    EXPECT_EQ(offered(), (std::vector<std::string>{"both", "theirs"}));
    EXPECT_FALSE(saved().profiles.front().enabled);
    model->openReview(id());
    EXPECT_EQ(decide({"theirs"}), Decision::accepted);
    EXPECT_FALSE(model->presentedReview());
    ASSERT_TRUE(uploads(2));
    EXPECT_EQ(testing::readFile(site / "theirs"), "server edit");
    EXPECT_EQ(testing::readFile(site / "both"), "local edit");
    EXPECT_EQ(onServer("both"), "local edit");
    EXPECT_TRUE(saved().profiles.front().enabled);
    restart().startEnabled();
    EXPECT_TRUE(model->running(id()));
}

TEST_F(Review, PausedReviewLetsNoLaterLocalEditOverwriteIt) {
    reviewBothSides();
    model->pause(id());
    editLater("theirs");
    model->resume(id());
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    EXPECT_EQ(offered(), (std::vector<std::string>{"both", "theirs"}));
    EXPECT_EQ(onServer("theirs"), "server edit");
}

TEST_F(Review, ChangedFilesDoNotStopTheOtherDownloads) {
    testing::writeTree(site.root(), {{"edited", "1"}, {"fine", "1"}, {"gone", "1"}, {"removed", "1"}, {"mine", "1"}});
    withProfile().start(id());
    ASSERT_TRUE(uploads(5));
    ASSERT_TRUE(runUntil([&] { return model->remoteDates(id()).size() == 5; }));
    model->pause(id());
    testing::writeFile(site / "mine", "local edit");
    for (const auto* path : {"edited", "fine", "gone", "removed"}) editOnServer(path, "server edit", 1);
    model->resume(id());
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    editLater("edited");
    fs::remove(site / "gone");
    fs::remove(server.root() / "site/removed");
    EXPECT_EQ(decide({"edited", "fine", "gone", "removed"}), Decision::accepted);
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    EXPECT_EQ(
        logged("Not downloaded, because they changed meanwhile: edited, gone, removed. The server is checked again "
               "before anything is uploaded."),
        1U);
    EXPECT_EQ(logged("edited changed locally after the comparison. Review it again before replacing it."), 1U);
    EXPECT_EQ(testing::readFile(site / "fine"), "server edit");
    EXPECT_EQ(model->baseline(id()).at("fine"), site.fingerprint("fine"));
    EXPECT_EQ(offered(), std::vector<std::string>{"edited"});
    EXPECT_TRUE(model->reviews().at(id()).changes.front().bothChanged) << "not replaced without an explicit tick";
    EXPECT_EQ(onServer("edited"), "server edit");
    EXPECT_EQ(onServer("mine"), "1");

    EXPECT_EQ(decide({}), Decision::accepted);
    ASSERT_TRUE(runUntil([&] { return onServer("edited") == "local edit" && onServer("mine") == "local edit"; }));
    EXPECT_FALSE(fs::exists(site / "gone"));
}

TEST_F(Review, FailedDownloadCanBeRetriedBeforeAnyUpload) {
    reviewBothSides();
    server.stop();
    EXPECT_EQ(decide({"theirs"}), Decision::accepted);
    EXPECT_EQ(status().phase, Phase::downloadingReview);
    ASSERT_TRUE(reaches(Phase::checkFailed));
    EXPECT_TRUE(
        status().detail.ends_with(" Uploads remain paused. Retry the server check to review the latest versions."))
        << status().detail;
    editLater("theirs");
    server.restart();
    model->retryCheck(id());
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    EXPECT_EQ(offered(), std::vector<std::string>{"theirs"}) << "the other file's version was kept";
    EXPECT_EQ(onServer("mine"), "1");
}

TEST_F(Review, DecisionThatCannotBeSavedIsNone) {
    reviewBothSides();
    fs::rename(stateFolder / "state", stateFolder / "aside");
    testing::writeFile(stateFolder / "state", "in the way");
    const RemoteDates dates = model->remoteDates(id());
    EXPECT_EQ(decide({}), Decision::refused);
    EXPECT_TRUE(model->alert());
    EXPECT_EQ(model->remoteDates(id()), dates);
    EXPECT_TRUE(model->presentedReview());
    fs::remove(stateFolder / "state");
    fs::rename(stateFolder / "aside", stateFolder / "state");
}

} // namespace
} // namespace zembrastel
