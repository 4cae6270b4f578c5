#include "transport/compare/server_record.h"

#include "support/certificates.h"
#include "support/local_site.h"
#include "transport/compare/missing_files.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using PathSet = std::set<std::string, std::less<>>;
using Differences = std::vector<std::chrono::duration<double>>;

constexpr auto recordedMoment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);
const RemoteDate recordedDate = toRemoteDate(recordedMoment);

TEST(ServerRecord, EditsDifferFromTheRecordedVersion) {
    const Fingerprint uploaded{.size = 10};
    const Fingerprint chosen{.size = 99};
    const RecordedFile whole{.local = &uploaded, .remoteDate = &recordedDate};
    const RecordedFile undated{.local = &uploaded};
    const RecordedFile decided{.remoteDate = &recordedDate, .announced = &chosen};
    struct {
        const char* what;
        ServerVersion found;
        RecordedFile recorded;
        std::chrono::seconds shift;
        bool differs;
    } const cases[]{
        {"the same", {recordedDate, 10}, whole, 0s, false},
        {"a rounded date", {recordedDate + 1s, 10}, whole, 0s, false},
        {"a later edit", {recordedDate + 2s, 10}, whole, 0s, true},
        {"an older copy put back", {recordedDate - 24h, 10}, whole, 0s, true},
        {"an edit within the same second", {recordedDate, 11}, whole, 0s, true},
        {"a size that the server does not report", {recordedDate, std::nullopt}, whole, 0s, false},
        {"a moved clock", {recordedDate + 1h, 10}, whole, 1h, false},
        {"an edit after the clock moved", {recordedDate + 1h + 5s, 10}, whole, 1h, true},
        {"an edit where no date was recorded", {recordedDate, 11}, undated, 0s, true},
        {"no edit where no date was recorded", {recordedDate, 10}, undated, 0s, false},
        {"a version that the user has decided on", {recordedDate, 99}, decided, 0s, false},
        {"an edit within the second of such a version", {recordedDate + 1s, 98}, decided, 0s, true},
        {"nothing recorded", {recordedDate, 10}, {}, 0s, false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(differsFromRecord(each.found, each.recorded, each.shift), each.differs) << each.what;
    }
}

TEST(ServerRecord, OnlyAMovedClockIsACommonShift) {
    struct {
        const char* what;
        Differences found;
        std::chrono::seconds shift;
    } const cases[]{
        {"summer time", {3600s, 3600s, 3601s}, 1h},
        {"a zone in the west", {-19800s, -19800s, -19800s}, -330min},
        {"two files that were touched together", {3600s, 3600s}, 0s},
        {"all files uploaded anew", {500s, 500s, 500s}, 0s},
        {"one file edited exactly an hour later", {3600s, 0s, 0s}, 0s},
        {"farther than any zone", {30h, 30h, 30h}, 0s},
        {"no file", {}, 0s},
    };
    for (const auto& each : cases) EXPECT_EQ(commonShift(each.found), each.shift) << each.what;
}

class MissingFilesOn : public ::testing::TestWithParam<Kind> {};

TEST_P(MissingFilesOn, HiddenFilesAreNotReportedMissing) {
    const testing::ScopedTrust trust(testing::certificates().ca);
    for (const auto tls : {FtpServer::Tls::none, FtpServer::Tls::explicitTls}) {
        if (FtpServer::unavailable(GetParam(), tls)) continue;
        FtpServer server(GetParam(), {.tls = tls, .showHidden = GetParam() == Kind::odd});
        const FileTree files{{".htaccess", "1"}, {".well-known/a", "1"}, {"b", "1"}, {"c", "22"},
                             {"gone/.d", "1"},   {"gone/e", "1"},        {"f", "1"}, {"left", "1"}};
        LocalSite site(server, files);
        ServerRecord recorded{.knownDates = {{"left", leftMissing}}};
        for (const auto& [path, text] : files) recorded.baseline.set(path, site.fingerprint(path));
        for (const auto* path : {".htaccess", ".well-known/a", "b", "c", "f"}) {
            server.put(std::string("site/") + path, *path == 'c' ? "33" : "1");
            testing::touch(server.root() / "site" / path, recordedMoment);
        }
        const auto compared = [&] { return site.transport().newerRemoteFiles(recorded, [](const std::string&) {}); };
        const auto check = compared();
        EXPECT_EQ(check.missing, (PathSet{"gone/.d", "gone/e"}));
        EXPECT_TRUE(check.changes.empty());

        // An edit of a hidden file meets another version there.
        testing::writeFile(site / ".htaccess", "mine");
        server.put("site/.htaccess", "a colleague's");
        recorded.wasCompared = true;
        EXPECT_EQ(compared().changes.size(), 1U);
        testing::writeFile(site / ".htaccess", "1");
        server.put("site/.htaccess", "1");

        recorded.compareAll = true;
        const auto all = compared();
        EXPECT_EQ(all.toSend, (PathSet{"gone/.d", "gone/e", "left"}));
        ASSERT_EQ(all.changes.size(), 1U);
        EXPECT_EQ(all.changes.front().path, "c");
        EXPECT_TRUE(all.changes.front().bothChanged) << "the server's file is not newer";
        PathSet equal;
        for (const auto& [path, fingerprint] : all.recognised.files) equal.insert(path);
        EXPECT_EQ(equal, (PathSet{".htaccess", ".well-known/a", "b", "f"}));
    }
}

TEST(MissingFiles, WrongListingsAreNotTrusted) {
    const std::vector<std::string> unlisted{".a", "b", "c", "d"};
    struct Case {
        Answers answers;
        PathSet missing;
    };
    using enum RemoteFacts::Presence;
    for (const auto& [answers, missing] :
         {Case{{{".a", absent}, {"b", absent}}, {".a", "b", "c", "d"}},
          Case{{{".a", present}, {"b", absent}}, {"b", "c", "d"}}, Case{{{"b", absent}, {"c", present}}, {"b"}},
          Case{{{"b", absent}, {"c", unknown}}, {"b"}}}) {
        EXPECT_EQ(missingFiles(unlisted, answers), missing);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Servers, MissingFilesOn, ::testing::Values(Kind::proftpd, Kind::vsftpd, Kind::pureftpd, Kind::odd),
    [](const auto& server) { return FtpServer::name(server.param); });

} // namespace
} // namespace zembrastel
