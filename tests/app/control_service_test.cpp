#include "app/control_client.h"
#include "app/control_service.h"
#include "app/model_fixture.h"
#include "model/error.h"

#include <future>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Kind = ControlRequest::Kind;
using Reason = answer::Failed::Reason;

class Control : public testing::ModelFixture {
protected:
    // Runs the program until the other one has done its part.
    template <class Part>
    auto whileServing(Part part) {
        bool isOver = false;
        auto done = std::async(std::launch::async, [this, part, &isOver] {
            auto result = part();
            queue.post([&isOver] { isOver = true; });
            return result;
        });
        EXPECT_TRUE(runUntil([&] { return isOver; }));
        return done.get();
    }

    // All answers to a request; the last is Done or Failed unless the program has hung up.
    std::vector<ControlAnswer> ask(const ControlRequest& request) {
        return whileServing([this, request] {
            std::vector<ControlAnswer> answers;
            auto client = ControlClient::connect(folder());
            if (!client || !client->ask(request)) return answers;
            while (const auto answer = client->next(20s)) {
                answers.push_back(*answer);
                if (std::holds_alternative<answer::Done>(*answer) || std::holds_alternative<answer::Failed>(*answer)) {
                    break;
                }
            }
            return answers;
        });
    }

    template <class Answer>
    static std::vector<Answer> only(const std::vector<ControlAnswer>& answers) {
        std::vector<Answer> found;
        for (const auto& answer : answers) {
            if (const auto* one = std::get_if<Answer>(&answer)) found.push_back(*one);
        }
        return found;
    }

    static std::optional<Reason> failure(const std::vector<ControlAnswer>& answers) {
        const auto failed = only<answer::Failed>(answers);
        return failed.empty() ? std::nullopt : std::optional(failed.front().reason);
    }

    std::filesystem::path folder() const { return stateFolder / "state"; }

    void serve() { service.emplace(*model, queue, folder()); }

    // A file in sync, then edited on the server while the program was closed.
    void changeOnServerWhileClosed() {
        testing::writeTree(site.root(), {{"theirs", "1"}, {"mine", "1"}});
        withProfile().start(id());
        ASSERT_TRUE(uploads(2));
        ASSERT_TRUE(runUntil([&] { return model->remoteDates(id()).size() == 2; }));
        model.reset();
        editOnServer("theirs", "server edit", 1);
        editOnServer("mine", "server edit", 1);
        restart();
        serve();
        model->start(id());
    }

    std::optional<ControlService> service;

    void TearDown() override { service.reset(); }
};

TEST_F(Control, PauseAndResumeAreTheProgramsOwnAndSaidOnce) {
    testing::writeFile(site / "page", "1");
    withProfile();
    serve();
    EXPECT_EQ(only<answer::Changed>(ask({.kind = Kind::resume, .profiles = {id()}})).size(), 1U);
    EXPECT_TRUE(saved().profiles.front().enabled);
    EXPECT_TRUE(uploads(1));
    EXPECT_TRUE(only<answer::Changed>(ask({.kind = Kind::resume, .profiles = {id()}})).empty());
    EXPECT_FALSE(service->holdsPaused());

    EXPECT_EQ(only<answer::Changed>(ask({.kind = Kind::pause, .profiles = {id()}})).size(), 1U);
    EXPECT_FALSE(model->running(id()));
    EXPECT_FALSE(saved().profiles.front().enabled);
    EXPECT_TRUE(service->holdsPaused());
    EXPECT_TRUE(only<answer::Changed>(ask({.kind = Kind::pause, .profiles = {id()}})).empty());
    const auto told = only<answer::Status>(ask({.kind = Kind::status}));
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.front().status.title, "Paused");
    EXPECT_EQ(told.front().status.uploaded, 1);
    EXPECT_TRUE(told.front().status.lastUpload);
    EXPECT_EQ(failure(ask({.kind = Kind::pause, .profiles = {Uuid::random()}})), Reason::noProfile);
}

TEST(ControlMessages, ProgressArrivesWhole) {
    const TransferProgress progress{
        .work = TransferProgress::Work::downloading,
        .file = TransferProgress::File{.path = "a", .bytes = 1, .size = 2, .rate = 0.1, .left = std::chrono::hours(1)},
        .filesDone = 3,
        .filesQueued = 4,
        .folders = 5,
        .bytes = 6,
        .bytesQueued = UINT64_MAX};
    answer::Status told;
    told.status.progress = progress;
    EXPECT_EQ(std::get<answer::Status>(decodeControlAnswer(encode(told))).status.progress, progress);
}

TEST_F(Control, DecisionFromOutsideIsCarriedOutAndToldToItsEnd) {
    changeOnServerWhileClosed();
    const auto review = only<answer::Review>(ask({.kind = Kind::review, .profiles = {id()}})); // waits for the check
    ASSERT_EQ(review.size(), 1U);
    ASSERT_EQ(review.front().changes.size(), 2U);
    EXPECT_EQ(review.front().changes.front().remoteDate, model->reviews().at(id()).changes.front().remoteDate);

    const ControlRequest decision{
        .kind = Kind::decide, .profiles = {id()}, .revision = review.front().revision, .download = {"theirs"}};
    const auto answers = ask(decision);
    EXPECT_EQ(failure(answers), std::nullopt);
    const auto outcomes = only<answer::Outcome>(answers);
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_TRUE(outcomes[0].path == "mine" && outcomes[0].kept);
    EXPECT_TRUE(outcomes[1].path == "theirs" && outcomes[1].downloaded);
    EXPECT_EQ(testing::readFile(site / "theirs"), "server edit");
    EXPECT_TRUE(model->watching(id()));
    EXPECT_TRUE(only<answer::Review>(ask({.kind = Kind::review, .profiles = {id()}})).front().changes.empty());
}

TEST_F(Control, DecisionOnAnEarlierReviewIsRefused) {
    changeOnServerWhileClosed();
    ASSERT_TRUE(runUntil([&] { return model->reviews().contains(id()); }));
    const ControlRequest late{
        .kind = Kind::decide, .profiles = {id()}, .revision = stayPaused().reviewId.text(), .downloadAll = true};
    for (int turn = 0; turn < 2; ++turn) { // while the server is checked, and after that
        turn == 0 ? model->start(id()) : void(reaches("Review remote changes"));
        const auto refused = only<answer::Failed>(ask(late));
        ASSERT_EQ(refused.size(), 1U);
        EXPECT_EQ(refused.front().reason, Reason::otherReview);
        EXPECT_EQ(refused.front().text, outdatedDecision);
    }
    EXPECT_EQ(model->reviews().at(id()).changes.size(), 2U);
    EXPECT_EQ(testing::readFile(site / "theirs"), "1");
    EXPECT_EQ(onServer("mine"), "server edit");
}

TEST_F(Control, ReviewKeptFromBeforeAPauseIsShownButNotDecided) {
    changeOnServerWhileClosed();
    ASSERT_TRUE(runUntil([&] { return model->reviews().contains(id()); }));
    (void)stayPaused();
    const auto kept = only<answer::Review>(ask({.kind = Kind::review, .profiles = {id()}}));
    ASSERT_EQ(kept.size(), 1U);
    const auto refused = ask({.kind = Kind::decide, .profiles = {id()}, .revision = kept.front().revision});
    EXPECT_EQ(failure(refused), Reason::paused);
    EXPECT_TRUE(model->reviews().contains(id()));
    EXPECT_FALSE(model->running(id()));
}

TEST_F(Control, PauseEndsTheWaitForAServerCheck) {
    withProfile();
    serve();
    server.stop(); // the check fails and is tried again
    model->resume(id());
    ASSERT_TRUE(runUntil([&] { return model->checkFailures().contains(id()); }));
    EXPECT_EQ(failure(ask({.kind = Kind::review, .profiles = {id()}})), Reason::server);
    for (const Kind again : {Kind::resume, Kind::retry}) {
        ASSERT_TRUE(runUntil([&] { return model->checkFailures().contains(id()); }));
        const auto retried = only<answer::Changed>(ask({.kind = again, .profiles = {id()}}));
        EXPECT_TRUE(retried.size() == 1 && retried.front().retried);
    }
    EXPECT_EQ(only<answer::Changed>(ask({.kind = Kind::pause, .profiles = {id()}})).size(), 1U);
    EXPECT_EQ(failure(ask({.kind = Kind::review, .profiles = {id()}})), Reason::paused);
}

TEST_F(Control, WhateverIsSentTheProgramGoesOn) {
    withProfile();
    serve();
    model->start(id());
    const std::string valid = R"({"version":1,"request":"pause","profiles":[")" + id().text() + R"("]})";
    const std::vector<std::string> nonsense{
        "",
        "GET / HTTP/1.1",
        "{}",
        "[]",
        std::string(100000, '['),
        std::string("\0\xff", 2),
        valid.substr(0, valid.size() - 1),
        R"({"version":2,"request":"pause"})",
        R"({"version":1,"request":"delete"})",
        R"({"version":1,"request":"review"})",
        R"({"version":1,"request":"pause","profiles":"all"})",
        R"({"version":1,"request":"pause","profiles":["x"]})",
        R"({"version":1,"request":"show"})"};
    for (const auto& line : nonsense) {
        const auto answered = whileServing([&] {
            auto client = LocalConnection::open(folder(), controlSocketName);
            return client && client->send(line) ? client->readLine(20s) : std::nullopt;
        });
        ASSERT_TRUE(answered) << line.substr(0, 100);
        EXPECT_TRUE(std::holds_alternative<answer::Failed>(decodeControlAnswer(*answered))) << *answered;
    }
    const auto silent = LocalConnection::open(folder(), controlSocketName);
    auto leaving = LocalConnection::open(folder(), controlSocketName);
    ASSERT_TRUE(silent && leaving && leaving->send(encode({.kind = Kind::follow})));
    leaving.reset();
    auto follower = ControlClient::connect(folder());
    ASSERT_TRUE(follower && follower->ask({.kind = Kind::follow}));
    ASSERT_TRUE(whileServing([&] { return follower->next(20s).has_value(); })); // it follows from now on
    testing::writeFile(site / "page", "1");
    EXPECT_TRUE(uploads(1));
    EXPECT_TRUE(model->watching(id()));
    EXPECT_TRUE(whileServing([&] {
        while (const auto told = follower->next(20s)) {
            const auto* line = std::get_if<answer::Activity>(&*told);
            if (line != nullptr && line->line.text == "Uploaded page") return true;
        }
        return false;
    }));
}

} // namespace
} // namespace zembrastel
