// Settings of servers that forbid a step of an upload.
#include "support/local_site.h"
#include "transport/ftp_transport.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using testing::failureOf;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;

std::string uploadFailure(const LocalSite& site, const std::string& path) {
    return failureOf([&] { site.transport().upload(path, site.fingerprint(path)); });
}

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

} // namespace
} // namespace zembrastel
