// A site that another program uploaded before the profile was made.
#include "server_fixture.h"

#include "model/records/comparison_record.h"
#include "support/wait_for.h"

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;

class Adopt : public CliWithServer {
protected:
    static constexpr int files = 640;

    // Of 640 local files the server has 612 in the same size, one of them with other contents, and 10 in another size.
    void uploadElsewhere() {
        std::filesystem::remove_all(site);
        for (int number = 0; number < files; ++number) {
            const std::string path = "folder" + std::to_string(number % 8) + "/" + std::to_string(number);
            writeFile(site / path, "content of " + std::to_string(number));
            if (number >= 622) continue;
            std::string there = number < 612 ? readFile(site / path) : "older";
            if (number == 0) there.back() = '!';
            server->put("site/" + path, there);
            touch(serverSite / path, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) - 24h);
        }
    }
};

TEST_F(Adopt, EqualFilesAreNotSentAgain) {
    uploadElsewhere();
    const Texts question{
        "612 of 640 files are on the server already: names and sizes match.",
        "10 more files are there with another size.", "Uploading the others replaces 10 files on the server."};
    for (const auto* command : {"push", "push --dry-run", "check", "adopt"}) {
        const auto asked = expect(3, command, question);
        EXPECT_TRUE(contains(asked.errors, "adopt 'My website'"));
        EXPECT_TRUE(contains(asked.errors, "To upload the other 28: "));
    }
    EXPECT_TRUE(contains(expect(3, "review").errors, "Nothing was decided."));
    expect(3, "push --json", {R"("event":"choice")", R"("others":28)"});
    expect(2, "adopt --by date");
    EXPECT_EQ(readFile(serverSite / "folder1/617"), "older");
    expect(0, "adopt --by size", {"612 files of \"My website\" count as published."});
    expect(0, "adopt --by size", {"There is nothing to choose"});
    expect(0, "push --dry-run", {"To push: 28 files."});
    expect(0, "push", {"Pushed \"My website\": 28 files."});
    expect(0, "push", {"Nothing to push"});
    EXPECT_EQ(readFile(serverSite / "folder0/0"), "content of !") << "its size is the same";
    writeFile(serverSite / "folder0/0", readFile(site / "folder0/0"));
    EXPECT_EQ(readTree(serverSite), readTree(site));
}

TEST_F(Adopt, KilledComparisonContinuesWhereItEnded) {
    uploadElsewhere();
    const std::string large(1 << 20, 'x');
    writeFile(site / "folder7/zz", large);
    server->put("site/folder7/zz", large);
    FtpServer slow(FtpServer::Kind::proftpd, {.rateKiB = 300});
    std::filesystem::copy(serverSite, slow.root() / "site", std::filesystem::copy_options::recursive);
    serverSite = slow.root() / "site";
    for (const auto& [path, text] : readTree(serverSite)) {
        touch(serverSite / path, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) - 24h);
    }
    slow.handOver();
    saveProfile(slow, slow.remoteFolder("site"));
    Program killed = place.start("adopt 'My website' --by content");
    const ComparisonRecord kept(place.state(), place.profile().id);
    ASSERT_TRUE(eventually([&] { return !kept.read().different.files.empty(); }));
    killed.kill();
    EXPECT_EQ(readFile(serverSite / "folder1/617"), "older") << "nothing is uploaded before the choice";
    const auto asked = expect(3, "adopt", {"more file there has the same size but other contents."});
    EXPECT_TRUE(contains(asked.errors, "which downloads")) << "the comparison is not complete";
    expect(0, "adopt --by content", {"612 files of \"My website\" count as published."});
    expect(0, "push", {"29 files."});
    EXPECT_EQ(readTree(serverSite), readTree(site));
}

TEST_F(Adopt, RunningProgramWaitsForTheChoice) {
    uploadElsewhere();
    Program watch = startWatch();
    readUntil(watch, R"("event":"choice")");
    expect(0, "status", {"My website  Choose what to upload", "612 of 640 files are on the server already"});
    expect(0, "status --json", {R"("choice":{"files":640,"alike":612)"});
    EXPECT_TRUE(contains(expect(3, "push --missing").errors, "Nothing was uploaded."));
    expect(3, "review");
    expect(3, "adopt", {"612 of 640"});
    expect(0, "pause");
    expect(1, "adopt --by size");
    expect(0, "resume");
    expect(0, "adopt --by content", {"611 files of \"My website\" count as published."});
    readUntilWatching(watch);
    expect(0, "adopt --by content", {"There is nothing to choose"});
    EXPECT_TRUE(eventually([&] { return readTree(serverSite) == readTree(site); }));
    expect(0, "status", {"29 files since the program started"});
    end(watch);
}

} // namespace
} // namespace zembrastel::testing
