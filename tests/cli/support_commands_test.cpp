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

TEST_F(SupportCommands, VersionComesBackWhileAnotherProgramHoldsTheState) {
    const std::string older = "11111111-2222-4333-8444-555555555555";
    const std::string newer = "AAAAAAAA-2222-4333-8444-555555555555";
    std::filesystem::create_directory(site);
    Profile profile;
    profile.localFolder = site.string();
    saveProfile(profile);
    EXPECT_TRUE(contains(place.run({"backups", "Site"}).output, "There are no backups yet."));

    writeFile(site / "index.html", "now");
    keepVersion(site, older, "index.html", "oldest", 5);
    keepVersion(site, newer, "index.html", "older", 9);
    keepVersion(site, "BBBBBBBB-2222-4333-8444-555555555555", "images/a.svg", "<svg/>", 9);
    const auto lock = InstanceLock::acquire(place.state());
    ASSERT_TRUE(lock);

    const auto listed = place.run({"backups", "Site", "--json"});
    EXPECT_TRUE(contains(listed.output, R"("files":2,"versions":3,"bytes":17)"));
    EXPECT_TRUE(contains(
        listed.output,
        R"({"event":"backup","path":"index.html","backup":")" + newer
            + R"(","kept":"2026-03-04T09:00:00Z","modified":"2026-03-04T08:00:00Z","bytes":5,"version":1})"));
    EXPECT_FALSE(contains(place.run({"backups", "Site", "images"}).output, "index.html"));

    // Which one is meant is never guessed.
    const auto unclear = place.run({"restore", "Site", "index.html"});
    EXPECT_EQ(unclear.status, 2);
    EXPECT_TRUE(contains(unclear.errors, "2026-03-04 09:00:00 (AAAAAAAA), 2026-03-04 05:00:00 (11111111)"));
    EXPECT_EQ(place.run({"restore", "Site", "index.html", "--version", "2026-03-04"}).status, 1);
    EXPECT_EQ(place.run({"restore", "Site", "index.html", "--version", "2020"}).status, 1);
    EXPECT_EQ(place.run({"restore", "Site", "missing.html", "--latest"}).status, 1);
    EXPECT_EQ(index(), "now");

    const auto restored = place.run({"restore", "Site", "index.html", "--version", "2026-03-04 05:00"});
    EXPECT_EQ(restored.status, 0) << restored.errors;
    EXPECT_TRUE(contains(restored.output, "The version that it replaced is a backup now."));
    EXPECT_TRUE(contains(restored.errors, "uploads the file"));
    EXPECT_EQ(index(), "oldest");
    EXPECT_EQ(place.run({"restore", "Site", (site / "index.html").string(), "--latest"}).status, 0);
    EXPECT_EQ(index(), "now");
    EXPECT_EQ(place.run({"restore", "Site", "./index.html", "--version", "aaaa"}).status, 0);
    EXPECT_EQ(index(), "older");
}

TEST_F(SupportCommands, DoctorSaysWhatIsWrongAndNeverThePassword) {
    FtpServer server(FtpServer::Kind::odd, {.extra = {"--echo", "--no-replace"}});
    server.put("page", "x");
    std::filesystem::create_directory(site);
    saveProfile(profileFor(server, site, server.remoteFolder()));
    const auto doctor = [&](const std::string& password, const CliPlace::Arguments& more) {
        place.savePassword(password);
        CliPlace::Arguments arguments{"doctor", "Site", "--password-file", place.passwordFile().string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return place.run(arguments);
    };
    const auto written = doctor(server.password(), {"--write"});
    EXPECT_EQ(written.status, 1);
    EXPECT_TRUE(contains(written.output, "Profile: Site\n"));
    EXPECT_TRUE(contains(written.output, "  WRONG   The server does not rename a file over one that is there."));
    EXPECT_TRUE(contains(written.output, "Ask the hosting provider to allow it"));
    EXPECT_EQ(readTree(server.root()), (FileTree{{"page", "x"}})) << "its own test files are gone again";
    EXPECT_EQ(doctor(server.password(), {}).status, 0) << "reading alone finds nothing wrong";
    const auto refused = doctor("wr0ng-w0rd", {"--json"});
    EXPECT_EQ(refused.status, 5);
    EXPECT_TRUE(contains(refused.output, R"("subject":"login","outcome":"wrong")"));
    EXPECT_TRUE(contains(refused.output, "••••")) << "the server repeats what it was given";
    for (const auto& told : {written, refused}) {
        for (const auto* password : {"s3cret", "wr0ng-w0rd"}) {
            EXPECT_EQ((told.output + told.errors).find(password), std::string::npos) << told.output;
        }
    }
}

} // namespace
} // namespace zembrastel::testing
