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

using RunningProgram = CliWithServer;

TEST_F(RunningProgram, PausedEditsAreUploadedAfterResume) {
    Program watch = startWatch();
    readUntilWatching(watch);
    expect(0, "status", {"My website  Watching\n", "2 files since the program started, the last at 20"});
    expect(0, "pause", {"Paused \"My website\".\n"});
    expect(0, "pause", {"\"My website\" is paused already.\n"});
    EXPECT_FALSE(place.profile().enabled);
    writeFile(site / "index.html", "edited while paused");
    expect(0, "status --json", {R"("running":false)"});
    expect(0, "resume", {"Resumed \"My website\".\n"});
    readUntil(watch, "Uploaded index.html");
    EXPECT_EQ(readTree(serverSite), readTree(site));
    EXPECT_TRUE(place.profile().enabled);
    place.expect(1, "status nosuch");
    end(watch);
}

TEST_F(RunningProgram, FollowerLearnsThatTheProgramEnded) {
    Program watch = startWatch();
    readUntilWatching(watch);
    Program follower = place.start("status --follow");
    readUntil(follower, "uploaded  2 files");
    writeFile(site / "index.html", "edited");
    readUntil(follower, "  My website  Uploaded index.html");
    watch.kill();
    EXPECT_EQ(follower.wait(), 6);
    EXPECT_TRUE(contains(place.errors(), "The followed program has ended."));
    place.expect(6, "status"); // a killed program leaves its socket
}

TEST_F(RunningProgram, NextProgramFollowsWhatWasSaved) {
    place.expect(6, "status", {"Zembrastel is not running for "});
    expect(0, "resume", {"its next start keeps the profile published"});
    EXPECT_TRUE(place.profile().enabled);
    expect(0, "pause", {"the next start of Zembrastel does not watch it"});
    EXPECT_FALSE(place.profile().enabled);
    const auto held = InstanceLock::acquire(place.state()); // by a command that takes no requests
    for (const char* command : {"pause", "resume", "review", "push"}) expect(4, command);
}

TEST_F(RunningProgram, ReviewInProgramReplacesOnlyTheChosenFiles) {
    expect(0, "push");
    changeOnServer("index.html", "by another", 60s);
    changeOnServer("images/a.svg", "by another", 60s);
    Program watch = startWatch();
    readUntil(watch, "Checking server");
    expect(3, "review", {"2 files newer on the server:"}); // waits for the check
    expect(0, "status", {"review    2 files newer on the server"});
    expect(1, "review --download index.html nosuch", {"\"nosuch\""});
    EXPECT_EQ(readFile(site / "index.html"), "hello");
    expect(
        0, "review --download index.html",
        {"Downloaded newer server copy: index.html", "Kept local copy: images/a.svg"});
    EXPECT_EQ(readFile(site / "index.html"), "by another");
    EXPECT_EQ(readFile(site / "images/a.svg"), "<svg/>");
    expect(0, "review", {"Nothing is newer on the server."});
    end(watch);
}

TEST_F(RunningProgram, DecisionOnAnEarlierReviewOverwritesNothing) {
    expect(0, "push");
    changeOnServer("index.html", "by another", 60s);
    Program watch = startWatch();
    readUntil(watch, R"("title":"Review remote changes")");
    const Uuid id = place.profile().id;
    const auto ask = [&](const ControlRequest& request) {
        auto program = ControlClient::connect(place.state());
        EXPECT_TRUE(program && program->ask(request));
        return program->next(limit).value();
    };
    const auto seen = std::get<answer::Review>(ask({.kind = ControlRequest::Kind::review, .profiles = {id}}));
    expect(0, "pause");
    writeFile(site / "images/a.svg", "mine");
    changeOnServer("images/a.svg", "by another", 120s);
    expect(0, "resume");
    const auto late =
        ask({.kind = ControlRequest::Kind::decide, .profiles = {id}, .revision = seen.revision, .downloadAll = true});
    EXPECT_EQ(std::get<answer::Failed>(late).text, outdatedDecision);
    expect(3, "review", {"2 files newer on the server:"});
    EXPECT_EQ(readFile(serverSite / "images/a.svg"), "by another");
    EXPECT_EQ(readFile(site / "index.html"), "hello");
    end(watch);
}

TEST_F(RunningProgram, FailedReviewDownloadCanBeRetried) {
    expect(0, "push");
    changeOnServer("index.html", "by another", 60s);
    Program watch = startWatch();
    for (const char* again : {"resume", "review", "check"}) {
        readUntil(watch, R"("title":"Review remote changes")");
        server->stop();
        expect(1, "review --download-all");
        server->restart();
        expect(std::string(again) == "resume" ? 0 : 3, again);
    }
    readUntil(watch, R"("title":"Review remote changes")");
    expect(0, "review --download-all");
    EXPECT_EQ(readFile(site / "index.html"), "by another");
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
    EXPECT_TRUE(eventually([this] { return place.run("status").status == 0; }));
    end(watch);
}

TEST_F(RunningProgram, PushSendsAllOnceAndNothingTwice) {
    std::filesystem::create_hard_link(place.passwordFile(), site / "password.txt"); // never to be published
    const auto dry = expect(
        0, "push --dry-run",
        {"Would upload images/a.svg (6 bytes)\nWould upload index.html (5 bytes)\n",
         "Left out, because it holds the password: password.txt"});
    EXPECT_FALSE(contains(dry.output, "password"));
    EXPECT_TRUE(readTree(serverSite).empty());
    EXPECT_TRUE(place.saved().baselines.empty());

    expect(0, "push", {"Pushed \"My website\": 2 files.\n"});
    auto expected = readTree(site);
    expected.erase("password.txt");
    EXPECT_EQ(readTree(serverSite), expected);
    const SavedState saved = place.saved();
    EXPECT_EQ(saved.baselines.begin()->second.size(), 2U);
    EXPECT_EQ(saved.remoteDates.value().begin()->second.size(), 2U);
    EXPECT_FALSE(saved.profiles.front().enabled);
    EXPECT_EQ(expect(0, "push").output, "Nothing to push: the server has all of \"My website\".\n");
}

TEST_F(RunningProgram, MovedProfileOverwritesNoWorkOfOthers) {
    writeFile(site / "equal.html", "equal");
    expect(0, "push");
    server->put("other/equal.html", "equal");
    server->put("other/index.html", "OTHER");
    const auto other = server->root() / "other";
    const auto old = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);
    for (const auto* path : {"equal.html", "index.html"}) touch(other / path, old);
    place.password.clear(); // set would store it, and there is no secret store
    place.expect(
        0, "profile set 'My website' --remote-folder " + server->remoteFolder("other"),
        {"Nothing has been sent to the new place yet", " push --all "});
    place.savePassword(server->password());

    for (const char* push : {"push --all --dry-run", "push --all"}) {
        expect(3, push, {"1 file different on the server:\n  index.html", " review --compare-all "});
    }
    EXPECT_EQ(readFile(other / "index.html"), "OTHER");
    EXPECT_FALSE(std::filesystem::exists(other / "images"));
    expect(0, "review --compare-all --keep-all");
    EXPECT_EQ(
        expect(0, "push --all").output,
        "Uploaded images/a.svg\nUploaded index.html\nPushed \"My website\": 2 files.\n");
    EXPECT_EQ(readTree(other), readTree(site));
    expect(0, "push --all", {"Nothing to push: "});
}

TEST_F(RunningProgram, MissingFilesAreSentOnlyOnRequest) {
    expect(0, "push");
    std::filesystem::remove_all(serverSite / "images");
    expect(1, "check", {"1 file is missing on the server:\n  images/a.svg\n"});
    for (const char* push : {"push --json", "push --dry-run"}) {
        const auto result = expect(1, push, {"1 file is missing on the server and was not sent"});
        EXPECT_FALSE(contains(result.output, "Nothing to push"));
    }
    Program watch = startWatch();
    readUntilWatching(watch);
    expect(0, "status", {"1 file is missing on the server"});
    EXPECT_FALSE(std::filesystem::exists(serverSite / "images"));
    expect(0, "push --missing");
    readUntil(watch, "Uploaded images/a.svg");
    EXPECT_EQ(readTree(serverSite), readTree(site));
    std::filesystem::remove_all(serverSite / "images"); // after the last check of the running program
    expect(0, "push --leave-missing", {"1 file stays missing on the server, and will not be reported again.\n"});
    expect(0, "check");
    end(watch);
    std::filesystem::remove(serverSite / "index.html");
    expect(0, "push --leave-missing");
    expect(0, "check");
    EXPECT_TRUE(readTree(serverSite).empty());
}

TEST_F(RunningProgram, PushOverwritesNoWorkOfOthers) {
    expect(0, "push");
    changeOnServer("index.html", "by another", 60s);
    writeFile(site / "index.html", "mine");
    for (const char* push : {"push", "push --dry-run"}) {
        expect(3, push, {"  index.html  server ", " review 'My website'"});
    }
    EXPECT_EQ(readFile(serverSite / "index.html"), "by another");
}

TEST_F(RunningProgram, PushThroughProgramEndsWhenAllIsLive) {
    Program watch = startWatch();
    readUntilWatching(watch);
    writeTree(site, {{"index.html", "edited"}, {"new.html", "1"}});
    expect(0, "push", {"Uploaded index.html\n", "Uploaded new.html\n", "Pushed \"My website\": 2 files.\n"});
    EXPECT_EQ(readTree(serverSite), readTree(site));
    EXPECT_EQ(expect(0, "push").output, "Nothing to push: the server has all of \"My website\".\n");
    std::filesystem::remove(serverSite / "new.html");
    expect(1, "push", {"1 file is missing on the server and was not sent"});

    std::filesystem::create_directory(serverSite / "locked");
    ASSERT_EQ(::chmod((serverSite / "locked").c_str(), 0555), 0); // the server's user cannot write there
    writeTree(site, {{"locked/page", "1"}});
    for (int turn = 0; turn < 2; ++turn) expect(1, "push", {"(locked/page). Retrying in "});
    std::filesystem::remove_all(site / "locked");
    changeOnServer("index.html", "by another", 60s);
    expect(3, "push", {"  index.html  server "});
    EXPECT_EQ(readFile(serverSite / "index.html"), "by another");
    end(watch);
}

TEST_F(RunningProgram, PushWaitsForThePausedProgram) {
    Program watch = startWatch();
    readUntilWatching(watch);
    expect(0, "pause");
    writeFile(site / "index.html", "edited");
    expect(1, "push", {"is paused in the running program. Nothing was uploaded"});
    Program push = place.start("push 'My website' --wait");
    EXPECT_TRUE(eventually([this] { return place.errors().find("Waiting until it ends") != std::string::npos; }));
    end(watch);
    EXPECT_EQ(push.wait(), 0);
    EXPECT_EQ(readFile(serverSite / "index.html"), "edited");
}

TEST_F(RunningProgram, FirstDownloadOfPushComesBeforeUploads) {
    server->put("site/server.html", "from the server");
    Profile profile = place.profile();
    profile.needsDownload = true;
    profile.initialDownloadSelection = DownloadSelection::everything();
    place.saveProfile(profile);
    expect(1, "push", {"still has its initial download to do"});
    EXPECT_FALSE(std::filesystem::exists(serverSite / "index.html"));
    expect(0, "push --download-first", {"Downloaded 1 file.\n", "Pushed \"My website\": 2 files.\n"});
    EXPECT_EQ(readTree(serverSite), readTree(site));
    EXPECT_FALSE(place.profile().needsDownload);
}

TEST_F(RunningProgram, DryRunOfPushEndsAsThePushWould) {
    for (const auto* unusable : {"excluded\xFF~", "caf\xE9"}) {
        writeFile(site / unusable, "x");
        const bool excluded = *unusable == 'e';
        for (const char* push : {"push --dry-run", "push"}) {
            const auto result = expect(excluded ? 0 : 1, push);
            const bool named = result.errors.ends_with("Left out, because its name is not valid UTF-8: caf\\xE9.\n");
            EXPECT_EQ(named, !excluded) << result.errors;
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

TEST_F(RunningProgram, StoppedProgramIsReportedNotAwaited) {
    Program watch = startWatch();
    readUntilWatching(watch);
    ASSERT_TRUE(watch.suspend());
    Program status = place.start("status");
    const auto resumed = place.run("resume 'My website'");
    EXPECT_EQ(resumed.status, 7);
    EXPECT_TRUE(contains(resumed.errors, "(process " + std::to_string(watch.pid()) + ") has not answered"));
    EXPECT_EQ(status.wait(), 7);
    watch.resume();
    place.expect(0, "status");
    end(watch);
}

TEST_F(RunningProgram, EmptyFolderIsForgottenOnlyOnRequest) {
    expect(0, "push");
    const auto known = [this] { return place.saved().baselines[place.profile().id].size(); };
    expect(0, "forget-files", {"Nothing to forget"});
    std::filesystem::rename(site, place.path("away"));
    std::filesystem::create_directory(site);
    expect(1, "push", {"None of the synchronised files is there", " forget-files "});
    Program watch = startWatch();
    readUntil(watch, R"("filesMissing":true)");
    EXPECT_EQ(known(), 2U);
    expect(0, "forget-files", {"Forgot the missing files"});
    EXPECT_TRUE(eventually([&] { return known() == 0; }));
    end(watch);
    EXPECT_EQ(readTree(serverSite), readTree(place.path("away")));
}

TEST_F(RunningProgram, PushNamesWhatWasNotSentAndFails) {
    expect(0, "push");
    std::filesystem::create_directory(serverSite / "locked");
    ASSERT_EQ(::chmod((serverSite / "locked").c_str(), 0555), 0); // the server's user cannot write there
    writeTree(site, {{"locked/page", "1"}, {"index.html", "sent before it"}, {"zzz", "1"}});
    const auto failed = expect(
        1, "push",
        {"Uploaded index.html\nUploaded zzz\nNot sent: locked/page\n",
         "locked/page: You may not write to this folder on the server.", "Not sent: 1 file."});
    EXPECT_TRUE(isOneFailure(failed.errors)) << failed.errors;
    place.savePassword("wrong");
    expect(5, "push", {"Nothing was uploaded."});
}

} // namespace
} // namespace zembrastel::testing
