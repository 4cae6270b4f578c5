// In what the servers differ, and the settings that change it: what docs/SERVERS.md tells site owners, measured. All
// but TLS itself is the same with and without it.
#include "support/certificates.h"
#include "support/local_site.h"
#include "support/wait_for.h"
#include "transport/ftp_transport.h"
#include "transport/missing_files.h"
#include "transport/server_record.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::failureOf;
using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using Words = std::vector<std::string>;
using PathSet = std::set<std::string, std::less<>>;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);

std::string uploadFailure(const LocalSite& site, const std::string& path) {
    return failureOf([&] { site.transport().upload(path, site.fingerprint(path)); });
}

class ServerDifferences : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override {
        if (const auto reason = FtpServer::unavailable(GetParam(), FtpServer::Tls::none)) GTEST_SKIP() << *reason;
    }
};

TEST_P(ServerDifferences, WhatIsHiddenOrUndatedInListingsIsKnown) {
    const bool showsDotFiles = GetParam() == Kind::odd;
    const bool hasMLSD = GetParam() != Kind::vsftpd;
    FtpServer server(GetParam(), {.showHidden = showsDotFiles, .environment = {"TZ=Asia/Tokyo"}});
    server.put("site/.htaccess", "x");
    server.put("site/page", "x");
    testing::touch(server.root() / "site/page", moment);
    const auto transport = LocalSite(server).transport();
    const auto entries = transport.list("");
    EXPECT_EQ(entries.size(), showsDotFiles ? 2U : 1U);
    const auto page = std::find_if(entries.begin(), entries.end(), [](const auto& e) { return e.name == "page"; });
    ASSERT_NE(page, entries.end());
    EXPECT_EQ(page->modified, hasMLSD ? std::optional(toRemoteDate(moment)) : std::nullopt);
    EXPECT_EQ(transport.modificationDate("page"), toRemoteDate(moment)) << "the server's own time zone does not matter";
}

TEST_P(ServerDifferences, HiddenFilesAreNotCalledMissing) {
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

TEST_P(ServerDifferences, NamesThatAServerChangesOrRefusesAreKnown) {
    const bool restrictsNames = GetParam() == Kind::pureftpd;
    const Words names{" leading", "trailing ", "tab\tx", "delete\x7fx", "back\\slash", "folder /x"};
    FtpServer server(GetParam());
    LocalSite site(server);
    std::set<std::string> refused;
    for (const auto& name : names) {
        testing::writeFile(site / name, "x");
        if (!uploadFailure(site, name).empty()) refused.insert(name);
    }
    std::set<std::string> kept;
    for (const auto& [path, content] : testing::readTree(server.root() / "site")) {
        if (!path.starts_with(".zembrastel-")) kept.insert(path);
    }
    if (restrictsNames) {
        EXPECT_EQ(refused, (std::set<std::string>{" leading", "trailing ", "back\\slash", "folder /x"}));
        EXPECT_EQ(kept, (std::set<std::string>{"_leading", "trailing_", "tab_x", "delete_x"}));
    } else {
        EXPECT_EQ(refused, std::set<std::string>());
        EXPECT_EQ(kept, std::set<std::string>(names.begin(), names.end()));
    }
    EXPECT_EQ(
        failureOf([&] { return site.transport().modificationDate("tab\tx"); }),
        "curl: (3) path contains control characters");
}

class LargeFolder : public ServerDifferences {};

TEST_P(LargeFolder, WhatAServerLeavesOutOfItIsKnown) {
    constexpr std::size_t many = 10'050;
    const auto listed = [](const FtpServer& server) {
        const auto folder = server.root() / "site";
        testing::writeFile(folder / "0", "");
        for (std::size_t n = 1; n < many; ++n) fs::create_hard_link(folder / "0", folder / std::to_string(n));
        return LocalSite(server).transport().test();
    };
    if (GetParam() != Kind::pureftpd) {
        EXPECT_EQ(listed(FtpServer(GetParam())), many);
        return;
    }
    EXPECT_LE(listed(FtpServer(GetParam())), 10'000U);
    EXPECT_EQ(listed(FtpServer(GetParam(), {.extra = {"-L20000:5"}})), many);
}

std::string nameOf(const ::testing::TestParamInfo<Kind>& info) { return FtpServer::name(info.param); }

const auto everyServer = ::testing::Values(Kind::proftpd, Kind::vsftpd, Kind::pureftpd, Kind::odd);
INSTANTIATE_TEST_SUITE_P(On, ServerDifferences, everyServer, nameOf);
INSTANTIATE_TEST_SUITE_P(Rest, LargeFolder, everyServer, nameOf);

TEST(ServerSettings, UploadThatASettingForbidsIsToldAndLeavesTheLiveFile) {
    struct Forbidding {
        Kind kind;
        std::string setting;
        std::string told;
    };
    const std::string noRename = "curl: (21) QUOT string not accepted: RNFR .zembrastel-";
    const std::string noReplacement = "curl: (21) QUOT string not accepted: RNTO page";
    for (const auto& [kind, setting, told] : std::vector<Forbidding>{
             {Kind::proftpd, "AllowOverwrite off", noReplacement},
             {Kind::odd, "--no-replace", noReplacement},
             {Kind::vsftpd, "anon_other_write_enable=NO", noRename},
             {Kind::vsftpd, "cmds_denied=RNFR", noRename},
             {Kind::pureftpd, "-G", noRename},
             {Kind::proftpd, "PathDenyFilter \"(^|/)[.]\"", "curl: (25) Failed FTP upload: 550"},
             {Kind::vsftpd, "deny_file={.*}", "curl: (25) Failed FTP upload: 550"},
             {Kind::pureftpd, "-x", "curl: (25) Failed FTP upload: 553"},
         }) {
        if (FtpServer::unavailable(kind, FtpServer::Tls::none)) continue;
        FtpServer server(kind, {.extra = {setting}});
        server.put("site/page", "old");
        const auto failure = uploadFailure(LocalSite(server, {{"page", "new"}}), "page");
        EXPECT_TRUE(failure.starts_with(told)) << setting << ": " << failure;
        EXPECT_EQ(testing::readFile(server.root() / "site/page"), "old") << setting;
    }
}

TEST(ServerSettings, LocalTimesOfVsftpdAreTakenForUtc) {
    FtpServer server(Kind::vsftpd, {.extra = {"use_localtime=YES"}, .environment = {"TZ=Asia/Tokyo"}});
    server.put("site/page", "x");
    testing::touch(server.root() / "site/page", moment);
    EXPECT_EQ(LocalSite(server).transport().modificationDate("page"), toRemoteDate(moment + std::chrono::hours(9)));
}

TEST(ServerSettings, ProftpdRemovesWhatACancelledUploadLeftWhenTold) {
    FtpServer server(Kind::proftpd, {.rateKiB = 256, .extra = {"DeleteAbortedStores on"}});
    const LocalSite site(server, {{"page", testing::randomBytes(2'000'000)}});
    const auto transport = site.transport();
    const auto parts = [&] { return testing::leftoverPartFiles(server.root()); };
    std::jthread canceller([&] {
        // So far that more is on its way: where all that was sent has come, the end of it is that of a short file.
        EXPECT_TRUE(testing::eventually([&] {
            const auto all = parts();
            return !all.empty() && fs::file_size(server.root() / all.front()) > 300'000;
        }));
        transport.control->cancel();
    });
    EXPECT_THROW(transport.upload("page", site.fingerprint("page")), Cancelled);
    EXPECT_TRUE(testing::eventually([&] { return parts().empty(); }));
}

// The reason for which the contract is not tried on it with implicit TLS.
TEST(ServerSettings, PureftpdBeginsInPlainTextWithEverySettingOfItsTls) {
    if (const auto reason = FtpServer::unavailable(Kind::pureftpd, FtpServer::Tls::none)) GTEST_SKIP() << *reason;
    for (const auto* level : {"0", "1", "2", "3"}) {
        const FtpServer server(Kind::pureftpd, {.extra = {"-Y", level, "-2", testing::certificates().server.string()}});
        LocalSite site(server);
        site.profile.transport = TransferProtocol::implicitTLS;
        const auto failure = failureOf([&] { return site.transport().test(); });
        EXPECT_TRUE(failure.ends_with("SSL routines::wrong version number")) << level << ": " << failure;
    }
}

} // namespace
} // namespace zembrastel
