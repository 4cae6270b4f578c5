// Commands beside a program that runs, and push, which is one.
#include "server_fixture.h"

#include "app/control/control_client.h"
#include "app/remote_review.h"
#include "platform/instance_lock.h"
#include "platform/local_socket.h"
#include "support/wait_for.h"

#include <sys/stat.h>

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;

class RunningProgram : public CliWithServer {
protected:
    [[nodiscard]] bool isEnabled() const { return place.saved().profiles.front().enabled; }

    // What is there is known as synchronised.
    void pushAll() { ASSERT_EQ(run({"push", "My website"}).status, 0) << place.errors(); }
};

TEST_F(RunningProgram, WatchIsAskedPausedAndResumedWithoutBeingStopped) {
    Program watch = startWatch();
    readUntilWatching(watch);
    const auto status = place.run({"status"});
    EXPECT_EQ(status.status, 0) << status.errors;
    EXPECT_TRUE(contains(status.output, "My website  Watching\n"));
    EXPECT_TRUE(contains(status.output, "2 files since the program started, the last at 20"));

    EXPECT_EQ(place.run({"pause", "My website"}).output, "Paused \"My website\".\n");
    EXPECT_EQ(place.run({"pause", "My website"}).output, "\"My website\" is paused already.\n");
    EXPECT_FALSE(isEnabled());
    writeFile(site / "index.html", "edited while paused");
    EXPECT_TRUE(contains(place.run({"status", "My website", "--json"}).output, R"("running":false)"));
    EXPECT_EQ(place.run({"resume", "My website"}).output, "Resumed \"My website\".\n");
    readUntil(watch, "Uploaded index.html");
    EXPECT_EQ(readTree(serverSite), readTree(site));
    EXPECT_TRUE(isEnabled());
    EXPECT_EQ(place.run({"status", "nosuch"}).status, 1);
    end(watch);
}

TEST_F(RunningProgram, FollowerHearsWhatHappensAndThatTheProgramEnded) {
    Program watch = startWatch();
    readUntilWatching(watch);
    Program follower = place.start({"status", "--follow"});
    readUntil(follower, "uploaded  2 files");
    writeFile(site / "index.html", "edited");
    readUntil(follower, "  My website  Uploaded index.html");
    watch.kill();
    EXPECT_EQ(follower.wait(), 6);
    EXPECT_TRUE(contains(place.errors(), "The followed program has ended."));
    // What a killed program leaves does not count as one.
    EXPECT_EQ(place.run({"status"}).status, 6);
}

TEST_F(RunningProgram, WithoutOneTheNextIsToldByWhatIsSaved) {
    const auto status = place.run({"status"});
    EXPECT_EQ(status.status, 6);
    EXPECT_TRUE(contains(status.errors, "Zembrastel is not running for "));
    EXPECT_TRUE(contains(place.run({"resume", "My website"}).output, "its next start keeps the profile published"));
    EXPECT_TRUE(isEnabled());
    EXPECT_TRUE(contains(place.run({"pause", "My website"}).output, "the next start of Zembrastel leaves it alone"));
    EXPECT_FALSE(isEnabled());

    const auto held = InstanceLock::acquire(place.state()); // by a command that nobody can ask
    for (const char* command : {"pause", "resume", "review", "push"}) {
        EXPECT_EQ(run({command, "My website"}).status, 4) << command;
    }
}

TEST_F(RunningProgram, ItsReviewIsDecidedAsOneOfItsOwn) {
    pushAll();
    changeOnServer("index.html", "by somebody else", 60s);
    changeOnServer("images/a.svg", "by somebody else", 60s);
    Program watch = startWatch();
    readUntil(watch, "Checking server");
    const auto list = place.run({"review", "My website"}); // waits for the check
    EXPECT_EQ(list.status, 3) << list.errors;
    EXPECT_TRUE(contains(list.output, "2 files newer on the server:"));
    EXPECT_TRUE(contains(place.run({"status"}).output, "review    2 files newer on the server"));
    EXPECT_EQ(place.run({"review", "My website", "--download", "nosuch"}).status, 1);

    const auto decided = place.run({"review", "My website", "--download", "index.html"});
    EXPECT_EQ(decided.status, 0) << decided.errors;
    EXPECT_TRUE(contains(decided.output, "Downloaded newer server copy: index.html"));
    EXPECT_TRUE(contains(decided.output, "Kept local copy: images/a.svg"));
    EXPECT_EQ(readFile(site / "index.html"), "by somebody else");
    const auto after = place.run({"review", "My website"});
    EXPECT_EQ(after.status, 0) << after.errors;
    EXPECT_TRUE(contains(after.output, "Nothing is newer on the server."));
    end(watch);
}

TEST_F(RunningProgram, DecisionOnAnEarlierReviewOverwritesNothing) {
    pushAll();
    changeOnServer("index.html", "by somebody else", 60s);
    Program watch = startWatch();
    readUntil(watch, R"("title":"Review remote changes")");
    const Uuid id = place.saved().profiles.front().id;
    const auto ask = [&](const ControlRequest& request) {
        auto program = ControlClient::connect(place.state());
        EXPECT_TRUE(program && program->ask(request));
        return program->next(limit).value();
    };
    const auto seen = std::get<answer::Review>(ask({.kind = ControlRequest::Kind::review, .profiles = {id}}));
    EXPECT_EQ(place.run({"pause", "My website"}).status, 0);
    writeFile(site / "images/a.svg", "mine");
    changeOnServer("images/a.svg", "by somebody else", 120s);
    EXPECT_EQ(place.run({"resume", "My website"}).status, 0);
    const auto late =
        ask({.kind = ControlRequest::Kind::decide, .profiles = {id}, .revision = seen.revision, .downloadAll = true});
    EXPECT_EQ(std::get<answer::Failed>(late).text, outdatedDecision);
    const auto review = place.run({"review", "My website"});
    EXPECT_EQ(review.status, 3) << review.errors;
    EXPECT_TRUE(contains(review.output, "2 files newer on the server:"));
    EXPECT_EQ(readFile(serverSite / "images/a.svg"), "by somebody else");
    EXPECT_EQ(readFile(site / "index.html"), "hello");
    end(watch);
}

TEST_F(RunningProgram, FailedReviewDownloadIsRetriedFromATerminal) {
    pushAll();
    changeOnServer("index.html", "by somebody else", 60s);
    Program watch = startWatch();
    for (const char* again : {"resume", "review", "check"}) {
        readUntil(watch, R"("title":"Review remote changes")");
        server->stop();
        EXPECT_EQ(place.run({"review", "My website", "--download-all"}).status, 1);
        server->restart();
        EXPECT_EQ(run({again, "My website"}).status, std::string(again) == "resume" ? 0 : 3) << place.errors();
    }
    readUntil(watch, R"("title":"Review remote changes")");
    const auto decided = place.run({"review", "My website", "--download-all"});
    EXPECT_EQ(decided.status, 0) << decided.errors;
    EXPECT_EQ(readFile(site / "index.html"), "by somebody else");
    end(watch);
}

TEST_F(RunningProgram, ClientsThatMisbehaveDoNotDisturbWatching) {
    Program watch = startWatch();
    readUntilWatching(watch);
    std::vector<LocalConnection> clients;
    for (int count = 0; count < 100; ++count) {
        auto client = LocalConnection::open(place.state(), "socket");
        ASSERT_TRUE(client) << count;
        const std::string garbage = count % 3 == 0 ? "garbage" : encode({.kind = ControlRequest::Kind::follow});
        if (count % 3 != 2) std::ignore = client->send(garbage); // the rest say nothing, and none reads
        clients.push_back(*std::move(client));
    }
    writeFile(site / "index.html", "edited");
    readUntil(watch, "Uploaded index.html");
    clients.clear();
    EXPECT_TRUE(eventually([this] { return place.run({"status"}).status == 0; }));
    end(watch);
}

TEST_F(RunningProgram, PushSendsAllOnceAndNothingTwice) {
    std::filesystem::create_hard_link(place.passwordFile(), site / "password.txt"); // never to be published
    const auto dry = run({"push", "My website", "--dry-run"});
    EXPECT_EQ(dry.status, 0) << dry.errors;
    EXPECT_TRUE(contains(dry.output, "Would upload images/a.svg (6 bytes)\nWould upload index.html (5 bytes)\n"));
    EXPECT_TRUE(contains(dry.errors, "Left out, because it holds the password: password.txt")) << dry.errors;
    EXPECT_FALSE(contains(dry.output, "password"));
    EXPECT_TRUE(readTree(serverSite).empty());
    EXPECT_TRUE(place.saved().baselines.empty());

    const auto first = run({"push", "My website"});
    EXPECT_EQ(first.status, 0) << first.errors;
    EXPECT_TRUE(contains(first.output, "Pushed \"My website\": 2 files.\n"));
    auto expected = readTree(site);
    expected.erase("password.txt");
    EXPECT_EQ(readTree(serverSite), expected);
    const SavedState saved = place.saved();
    EXPECT_EQ(saved.baselines.begin()->second.size(), 2U);
    EXPECT_EQ(saved.remoteDates.value().begin()->second.size(), 2U);
    EXPECT_FALSE(saved.profiles.front().enabled);

    EXPECT_EQ(run({"push", "My website"}).output, "Nothing to push: the server has all of \"My website\".\n");
}

TEST_F(RunningProgram, MovedProfileIsSentWholeAndOverwritesNoWorkOfOthers) {
    writeFile(site / "equal.html", "equal");
    pushAll();
    server->put("other/equal.html", "equal");
    server->put("other/index.html", "OTHER");
    const auto other = server->root() / "other";
    const auto old = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);
    for (const auto* path : {"equal.html", "index.html"}) touch(other / path, old);
    const auto set = place.run({"profile", "set", "My website", "--remote-folder", server->remoteFolder("other")});
    EXPECT_TRUE(contains(set.errors, "Nothing has been sent to the new place yet"));
    EXPECT_TRUE(contains(set.errors, " push --all "));

    for (const char* dry : {"--dry-run", "--all"}) {
        const auto refused = run({"push", "My website", "--all", dry});
        EXPECT_EQ(refused.status, 3) << refused.errors;
        EXPECT_TRUE(contains(refused.output, "1 file different on the server:\n  index.html"));
        EXPECT_TRUE(contains(refused.errors, " review --compare-all "));
    }
    EXPECT_EQ(readFile(other / "index.html"), "OTHER");
    EXPECT_FALSE(std::filesystem::exists(other / "images"));
    EXPECT_EQ(run({"review", "My website", "--compare-all", "--keep-all"}).status, 0) << place.errors();
    const auto sent = run({"push", "My website", "--all"});
    EXPECT_EQ(sent.status, 0) << sent.errors;
    EXPECT_EQ(sent.output, "Uploaded images/a.svg\nUploaded index.html\nPushed \"My website\": 2 files.\n");
    EXPECT_EQ(readTree(other), readTree(site));
    EXPECT_TRUE(contains(run({"push", "My website", "--all"}).output, "Nothing to push: "));
}

TEST_F(RunningProgram, MissingFilesAreNamedAndSentOnlyOnRequest) {
    pushAll();
    std::filesystem::remove_all(serverSite / "images");
    const auto check = run({"check", "My website"});
    EXPECT_EQ(check.status, 1);
    EXPECT_TRUE(contains(check.output, "1 file is missing on the server:\n  images/a.svg\n"));
    for (const char* dry : {"--json", "--dry-run"}) {
        const auto push = run({"push", "My website", dry});
        EXPECT_EQ(push.status, 1);
        EXPECT_TRUE(contains(push.errors, "1 file is missing on the server and was not sent"));
        EXPECT_FALSE(contains(push.output, "Nothing to push"));
    }
    Program watch = startWatch();
    readUntilWatching(watch);
    EXPECT_TRUE(contains(place.run({"status"}).output, "1 file is missing on the server"));
    EXPECT_FALSE(std::filesystem::exists(serverSite / "images"));
    const auto asked = place.run({"push", "My website", "--missing"});
    EXPECT_EQ(asked.status, 0) << asked.errors;
    readUntil(watch, "Uploaded images/a.svg");
    EXPECT_EQ(readTree(serverSite), readTree(site));
    // Files that are removed after its last server check are left as well.
    std::filesystem::remove_all(serverSite / "images");
    const auto left = place.run({"push", "My website", "--leave-missing"});
    EXPECT_EQ(left.output, "1 file stays missing on the server, and will not be reported again.\n") << left.errors;
    EXPECT_EQ(run({"check", "My website"}).status, 0);
    end(watch);
    std::filesystem::remove(serverSite / "index.html");
    EXPECT_EQ(run({"push", "My website", "--leave-missing"}).status, 0);
    EXPECT_EQ(run({"check", "My website"}).status, 0);
    EXPECT_TRUE(readTree(serverSite).empty());
}

TEST_F(RunningProgram, PushOverwritesNoWorkOfOthers) {
    pushAll();
    changeOnServer("index.html", "by somebody else", 60s);
    writeFile(site / "index.html", "mine");
    for (const CliPlace::Arguments& push :
         {CliPlace::Arguments{"push", "My website"}, {"push", "My website", "--dry-run"}}) {
        const auto refused = run(push);
        EXPECT_EQ(refused.status, 3);
        EXPECT_TRUE(contains(refused.output, "  index.html  server "));
        EXPECT_TRUE(
            contains(refused.errors, " review \"My website\"") || contains(refused.errors, " review 'My website'"));
    }
    EXPECT_EQ(readFile(serverSite / "index.html"), "by somebody else");
}

TEST_F(RunningProgram, DryRunOfPushEndsAsThePushWould) {
    for (const auto* unusable : {"excluded\xFF~", "caf\xE9"}) {
        writeFile(site / unusable, "x");
        const auto dry = run({"push", "My website", "--dry-run"});
        const auto real = run({"push", "My website"});
        EXPECT_EQ(dry.status, *unusable == 'e' ? 0 : 1) << dry.errors;
        EXPECT_EQ(real.status, dry.status) << real.errors;
        if (dry.status == 0) continue;
        for (const auto& result : {dry, real}) {
            EXPECT_TRUE(contains(result.errors, "): Left out, because its name is not valid UTF-8: caf\\xE9.\n"))
                << result.errors;
        }
    }
}

TEST_F(RunningProgram, UnreadOutputHoldsUpNoUpload) {
    for (const char name : {'a', 'b', 'c', 'd', 'e', 'f'}) writeFile(site / std::string(200, name), "1");
    place.wrapper = {
        "/usr/bin/python3", "-c",
        "import fcntl, os, sys; fcntl.fcntl(1, fcntl.F_SETPIPE_SZ, 4096); os.execv(sys.argv[1], sys.argv[1:])"};
    Program watch = startWatch();
    EXPECT_TRUE(eventually([this] { return readTree(serverSite) == readTree(site); }, limit));
    const auto asked = std::chrono::steady_clock::now();
    end(watch);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 5s);
}

TEST_F(RunningProgram, StoppedProgramIsToldOfInsteadOfWaitedFor) {
    Program watch = startWatch();
    readUntilWatching(watch);
    ASSERT_TRUE(watch.suspend());
    Program status = place.start({"status"});
    EXPECT_EQ(place.run({"resume", "My website"}).status, 7);
    EXPECT_TRUE(contains(place.errors(), "(process " + std::to_string(watch.pid()) + ") has not answered"));
    EXPECT_EQ(status.wait(), 7);
    watch.resume();
    EXPECT_EQ(place.run({"status"}).status, 0);
    end(watch);
}

TEST_F(RunningProgram, EmptyFolderIsForgottenOnlyWhenTheUserSaysSo) {
    pushAll();
    const auto known = [this] {
        std::size_t files = 0;
        for (const auto& [id, baseline] : place.saved().baselines) files += baseline.size();
        return files;
    };
    EXPECT_TRUE(contains(place.run({"forget-files", "My website"}).output, "Nothing to forget"));
    std::filesystem::rename(site, place.path("away"));
    std::filesystem::create_directory(site);
    const auto push = run({"push", "My website"});
    EXPECT_EQ(push.status, 1);
    EXPECT_TRUE(contains(push.errors, "None of the synchronised files is there"));
    EXPECT_TRUE(contains(push.errors, " forget-files "));
    Program watch = startWatch();
    readUntil(watch, R"("filesMissing":true)");
    EXPECT_EQ(known(), 2U);
    EXPECT_TRUE(contains(place.run({"forget-files", "My website"}).output, "Forgot the missing files"));
    EXPECT_TRUE(eventually([&] { return known() == 0; }));
    end(watch);
    EXPECT_EQ(readTree(serverSite), readTree(place.path("away")));
}

TEST_F(RunningProgram, PushNamesWhatWasNotSentAndFails) {
    pushAll();
    // Nobody but this user can write there.
    std::filesystem::create_directory(serverSite / "locked");
    ASSERT_EQ(::chmod((serverSite / "locked").c_str(), 0555), 0);
    writeTree(site, {{"locked/page", "1"}, {"index.html", "sent before it"}, {"zzz", "1"}});
    const auto failed = run({"push", "My website"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(contains(failed.output, "Uploaded index.html\nUploaded zzz\nNot sent: locked/page\n"));
    EXPECT_TRUE(contains(failed.errors, "(locked/page). Not sent: 1 file."));
    EXPECT_TRUE(isOneLine(failed.errors)) << failed.errors;

    place.savePassword("wrong");
    const auto refused = run({"push", "My website"});
    EXPECT_EQ(refused.status, 5);
    EXPECT_TRUE(contains(refused.errors, "Nothing was uploaded."));
}

} // namespace
} // namespace zembrastel::testing
