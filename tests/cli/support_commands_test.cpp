// backups, restore and doctor as a user runs them.
#include "cli_run.h"

#include "platform/instance_lock.h"
#include "support/ftp_server.h"
#include "support/kept_version.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

class SupportCommands : public ::testing::Test {
protected:
    void saveProfile(Profile profile) const {
        profile.name = "Site";
        place.saveProfile(profile);
    }

    [[nodiscard]] std::string index() const { return readFile(site / "index.html"); }

    CliPlace place;
    std::filesystem::path site = place.path("site");
};

TEST_F(SupportCommands, RestoreWorksBesideARunningProgram) {
    const std::string older = "11111111-2222-4333-8444-555555555555";
    const std::string newer = "AAAAAAAA-2222-4333-8444-555555555555";
    std::filesystem::create_directory(site);
    Profile profile;
    profile.localFolder = site.string();
    saveProfile(profile);
    place.expect(0, "backups Site", {"There are no backups yet."});

    writeFile(site / "index.html", "now");
    keepVersion(site, older, "index.html", "oldest", 5);
    keepVersion(site, newer, "index.html", "older", 9);
    keepVersion(site, "BBBBBBBB-2222-4333-8444-555555555555", "images/a.svg", "<svg/>", 9);
    const auto lock = InstanceLock::acquire(place.state());
    ASSERT_TRUE(lock);
    place.expect(
        0, "backups Site --json",
        {R"("files":2,"versions":3,"bytes":17)",
         R"({"event":"backup","path":"index.html","backup":")" + newer
             + R"(","kept":"2026-03-04T09:00:00Z","modified":"2026-03-04T08:00:00Z","bytes":5,"version":1})"});
    EXPECT_FALSE(contains(place.expect(0, "backups Site images").output, "index.html"));

    // The program never guesses which version is meant.
    place.expect(2, "restore Site index.html", {"2026-03-04 09:00:00 (AAAAAAAA), 2026-03-04 05:00:00 (11111111)"});
    place.expect(1, "restore Site index.html --version 2026-03-04");
    place.expect(1, "restore Site index.html --version 2020");
    place.expect(1, "restore Site missing.html --latest");
    EXPECT_EQ(index(), "now");
    place.expect(
        0, "restore Site index.html --version '2026-03-04 05:00'",
        {"The version that it replaced is a backup now.", "uploads the file"});
    EXPECT_EQ(index(), "oldest");
    place.expect(0, "restore Site --latest " + (site / "index.html").string());
    EXPECT_EQ(index(), "now");
    place.expect(0, "restore Site ./index.html --version aaaa");
    EXPECT_EQ(index(), "older");
}

TEST_F(SupportCommands, DoctorPrintsProblemsAndNoPassword) {
    FtpServer server(FtpServer::Kind::odd, {.extra = {"--echo", "--no-replace"}});
    server.put("page", "x");
    std::filesystem::create_directory(site);
    saveProfile(profileFor(server, site, server.remoteFolder()));
    place.savePassword(server.password());
    const auto written = place.expect(
        1, "doctor Site --write",
        {"Profile: Site\n", "  WRONG   The server does not rename a file over one that is there.", "Ask the h"});
    EXPECT_EQ(readTree(server.root()), (FileTree{{"page", "x"}})) << "its own test files are gone again";
    place.expect(0, "doctor Site");   // reading alone finds no problem
    place.savePassword("wr0ng-w0rd"); // the server repeats it
    const auto refused = place.expect(5, "doctor Site --json", {R"("subject":"login","outcome":"wrong")", "••••"});
    for (const auto& printed : {written, refused}) {
        for (const auto* password : {"s3cret", "wr0ng-w0rd"}) {
            EXPECT_EQ((printed.output + printed.errors).find(password), std::string::npos) << printed.output;
        }
    }
}

} // namespace
} // namespace zembrastel::testing
