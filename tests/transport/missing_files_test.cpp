#include "support/certificates.h"
#include "support/local_site.h"
#include "transport/compare/missing_files.h"
#include "transport/compare/server_record.h"
#include "transport/ftp_transport.h"

#include <chrono>
#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using PathSet = std::set<std::string, std::less<>>;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);

class MissingFilesOn : public ::testing::TestWithParam<Kind> {};

TEST_P(MissingFilesOn, HiddenFilesAreNotCalledMissing) {
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
            testing::touch(server.root() / "site" / path, moment);
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

TEST(MissingFiles, ListingsAreTrustedOnlyWhileTheyWereRight) {
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
