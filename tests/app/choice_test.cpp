#include "app/model_fixture.h"

#include "model/records/comparison_record.h"

namespace zembrastel {
namespace {

using namespace std::chrono_literals;

// A site that was uploaded by another program: most files alike, some with other contents or another size.
class Choice : public testing::ModelFixture {
protected:
    void uploadElsewhere(const testing::FileTree& files, std::chrono::hours age) {
        for (const auto& [path, text] : files) {
            server.put("site/" + path, text);
            testing::touch(
                server.root() / "site" / path,
                std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) - age);
        }
    }

    void waitForChoice() {
        std::filesystem::remove(server.root() / "site/missing");
        testing::writeTree(
            site.root(),
            {{"a", "same"}, {"b", "same"}, {"changed", "here"}, {"longer", "longer here"}, {"missing", "1"}});
        uploadElsewhere({{"a", "same"}, {"b", "same"}, {"changed", "serv"}, {"longer", "there"}}, 24h);
        withProfile().start(id());
        ASSERT_TRUE(reaches(Phase::awaitingChoice));
    }

    // True once the profile watches and its files have this content on the server.
    [[nodiscard]] bool publishes(const testing::FileTree& files) {
        return reaches(Phase::watching) && polls(3)
               && std::ranges::all_of(files, [this](const auto& file) { return onServer(file.first) == file.second; });
    }

    [[nodiscard]] bool comparesAll() {
        model->compareContents(id());
        return runUntil([this] { return !model->comparingContents(id()); });
    }
};

TEST_F(Choice, EqualFilesAreNotSentAgain) {
    struct {
        const char* what;
        bool compares;
        Adoption adoption;
        std::int64_t uploads;
        const char* changed; // the server's file with the same size and other contents
    } const cases[]{
        {"by size", false, Adoption::alike, 2, "serv"},
        {"by content", true, Adoption::alike, 3, "here"},
        {"nothing", false, Adoption::nothing, 5, "here"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        waitForChoice();
        const auto& found = *model->firstComparison(id());
        EXPECT_EQ(found.localFiles, 5U);
        EXPECT_EQ(found.alikeFiles(), 3U);
        EXPECT_EQ(found.otherSizes, 1U);
        EXPECT_EQ(found.bytesToCompare(), 12U);
        if (each.compares) {
            ASSERT_TRUE(comparesAll());
            EXPECT_EQ(logged("Different: changed"), 1U);
        }
        EXPECT_EQ(status().uploaded, 0);
        EXPECT_EQ(model->adopt(id(), each.adoption), Decision::accepted);
        EXPECT_TRUE(publishes({{"a", "same"}, {"changed", each.changed}, {"longer", "longer here"}, {"missing", "1"}}));
        EXPECT_EQ(status().uploaded, each.uploads);
        restart().start(id());
        EXPECT_TRUE(reaches(Phase::watching)) << "nothing is asked or sent later";
        EXPECT_EQ(status().uploaded, 0);
        model->remove(id());
        site.profile.id = Uuid::random();
    }
}

TEST_F(Choice, FilesOfColleaguesAreNotReplacedUnseen) {
    testing::writeTree(site.root(), {{"a", "same"}, {"newer", "mine"}, {"edited", "mine"}, {"older", "mine"}});
    uploadElsewhere({{"a", "same"}, {"newer", "a colleague's"}}, -2h);
    uploadElsewhere({{"edited", "from before"}, {"older", "from before"}}, 24h);
    withProfile().start(id());
    ASSERT_TRUE(reaches(Phase::awaitingChoice));
    editOnServer("edited", "edited meanwhile", -3);
    EXPECT_EQ(model->adopt(id(), Adoption::alike), Decision::accepted);
    EXPECT_EQ(model->adopt(id(), Adoption::nothing), Decision::outdated);
    ASSERT_TRUE(reaches(Phase::awaitingReview));
    const auto changes = model->reviews().at(id()).changes;
    EXPECT_EQ(pathsOf(changes), (PathSet{"edited", "newer"}));
    EXPECT_FALSE(changes.back().bothChanged) << "no earlier version of it is known";
    EXPECT_EQ(status().uploaded, 0);
    EXPECT_EQ(decide({"newer"}), Decision::accepted);
    EXPECT_TRUE(publishes({{"a", "same"}, {"newer", "a colleague's"}, {"edited", "mine"}, {"older", "mine"}}));
}

TEST_F(Choice, ComparedContentsSurviveStopAndRestart) {
    waitForChoice();
    server.stop();
    EXPECT_TRUE(comparesAll());
    EXPECT_EQ(status().phase, Phase::checkFailed);
    server.restart();
    model->retryCheck(id());
    ASSERT_TRUE(reaches(Phase::awaitingChoice));
    ASSERT_TRUE(comparesAll());
    restart().start(id());
    ASSERT_TRUE(reaches(Phase::awaitingChoice)) << "an unanswered choice is asked again";
    EXPECT_TRUE(model->firstComparison(id())->isCompared());
    EXPECT_EQ(model->firstComparison(id())->alikeFiles(), 2U);

    // A result holds only for the compared versions.
    uploadElsewhere({{"changed", "here"}}, 48h);
    testing::writeFile(site / "b", "Same");
    model->pause(id());
    model->resume(id());
    ASSERT_TRUE(reaches(Phase::awaitingChoice));
    EXPECT_EQ(model->firstComparison(id())->alikeFiles(), 3U);
    EXPECT_EQ(model->firstComparison(id())->uncompared().size(), 2U);
    model->compareContents(id());
    model->stopComparing(id());
    EXPECT_EQ(status().phase, Phase::awaitingChoice);
    ASSERT_TRUE(comparesAll());
    EXPECT_EQ(model->firstComparison(id())->same, (PathSet{"a", "changed"}));
    EXPECT_EQ(status().uploaded, 0);
}

TEST_F(Choice, UnreadableServerFileDoesNotCountAsDifferent) {
    waitForChoice();
    std::filesystem::remove(server.root() / "site/b");
    std::filesystem::create_directory(server.root() / "site/b"); // which the server does not send
    model->compareContents(id());
    ASSERT_TRUE(reaches(Phase::checkFailed));
    EXPECT_EQ(
        model->checkFailure(id()).message, "The server does not send b, so the contents cannot be compared. Let your "
                                           "user name read them there, or choose without comparing them.");
    EXPECT_EQ(logged("Different: changed"), 1U) << "the other files are compared";
    EXPECT_EQ(logged("Different: b"), 0U);
}

TEST_F(Choice, NewPlaceIsTreatedAsTheUserSays) {
    struct {
        const char* folder;
        NewPlace found;
        std::int64_t uploads;
        const char* there; // afterwards
    } const cases[]{{"moved", NewPlace::sameFiles, 0, "Same"}, {"other", NewPlace::otherFiles, 1, "same"}};
    testing::writeTree(site.root(), {{"a", "same"}});
    withProfile().start(id());
    ASSERT_TRUE(uploads(1));
    for (const auto& each : cases) {
        const auto file = server.root() / each.folder / "a";
        server.put(std::string(each.folder) + "/a", "Same");
        testing::touch(file, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) - 24h);
        Profile changed = *model->profile(id());
        changed.remoteFolder = server.remoteFolder(each.folder);
        const auto before = status().uploaded;
        model->saveMoved(changed, each.found);
        if (!model->running(id())) model->start(id());
        EXPECT_TRUE(reaches(Phase::watching) && polls(3));
        EXPECT_EQ(status().uploaded - before, each.uploads) << each.folder;
        EXPECT_EQ(testing::readFile(file), each.there);
    }
    Profile changed = *model->profile(id());
    changed.remoteFolder = server.remoteFolder("moved");
    model->saveMoved(changed, NewPlace::unknown);
    if (!model->running(id())) model->start(id());
    EXPECT_TRUE(reaches(Phase::awaitingChoice));
}

TEST_F(Choice, EmptyServerIsNotAsked) {
    testing::writeTree(site.root(), {{"a", "1"}, {".hidden", "1"}});
    withProfile().start(id());
    EXPECT_TRUE(uploads(2));
    EXPECT_EQ(model->firstComparison(id()), nullptr);
}

} // namespace
} // namespace zembrastel
