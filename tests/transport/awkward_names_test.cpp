// Names, users, passwords and folders against the real curl: what arrives at the server is what was given, and nothing
// of it becomes a command to the server or an option of curl.
#include "support/local_site.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;

// What has a meaning to curl, to a server, in a URL or in a shell.
const std::vector<std::string> awkward{
    "a",
    " b",
    "b ",
    "\"",
    "\\",
    "\\\\",
    "\\n",
    "\\\"",
    "'",
    "`",
    "$(x)",
    "#",
    "# c",
    "?",
    "%",
    "%0d%0a",
    "%00",
    "%2F",
    ";",
    ";type=a",
    "@",
    "&",
    "=",
    "*",
    "-",
    "--next",
    "-k d",
    "+",
    "{a,b}",
    "[1-3]",
    "|",
    ">",
    "~",
    "...",
    "é",
    "\u65e5",
    "\u202e",
    "\U0001F600",
    "DELE x",
    "url = x",
    "\"upload-file = \"",
    "!",
    "^"};

TEST(AwkwardNames, ArriveAsTheyAreAndDoNothingElse) {
    for (std::size_t first = 0; first < awkward.size(); first += 11) {
        const std::string remote = "in " + awkward[first] + "/" + awkward[first + 1];
        const FtpServer server(FtpServer::Kind::odd);
        LocalSite site(server, {}, remote);
        for (std::size_t i = first; i < std::min(first + 11, awkward.size()); ++i) {
            const std::string path = awkward[i] + "/" + awkward[(i * 7) % awkward.size()] + "x";
            testing::writeFile(site / path, awkward[i]);
            site.transport().upload(path, site.fingerprint(path));
        }
        EXPECT_EQ(testing::readTree(server.root() / remote), site.files());
    }
}

TEST(AwkwardNames, LineBreaksAreRefusedBeforeAnythingIsSent) {
    const testing::TemporaryFolder logs;
    const FtpServer server(FtpServer::Kind::odd, {.extra = {"--log", logs / "log"}});
    for (const std::string& lineBreak :
         {std::string("\r\n"), std::string("\n"), std::string("\r"), std::string("\u2028"), std::string(1, '\0')}) {
        for (int field = 0; field < 4; ++field) {
            LocalSite site(server, {{"page", "x"}});
            std::string path = "page";
            auto& spoiled = *std::array{&site.profile.username, &site.password, &site.profile.remoteFolder, &path}.at(
                static_cast<std::size_t>(field));
            spoiled += lineBreak + "DELE x";
            const auto failure = testing::failureOf([&] {
                site.transport().upload(path, site.fingerprint("page"));
                return 0;
            });
            EXPECT_NE(failure, "") << field;
            EXPECT_FALSE(std::filesystem::exists(logs / "log")) << testing::readFile(logs / "log");
        }
    }
}

} // namespace
} // namespace zembrastel
