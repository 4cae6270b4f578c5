// Names, users, passwords and folders that have a meaning to curl, a server, a URL or a shell: they arrive unchanged,
// and none becomes a command or an option.
#include "platform/text.h"
#include "support/local_site.h"
#include "transport/curl/curl_configuration.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::string_view_literals;
using testing::failureOf;
using testing::FtpServer;
using testing::LocalSite;

// Separated by tabs.
constexpr auto awkward =
    "a\t b\tb \t\"\t\\\t\\\\\t\\n\t\\\"\t'\t`\t$(x)\t#\t# "
    "c\t?\t%\t%0d%0a\t%00\t%2F\t;\t;type=a\t@\t&\t=\t*\t-\t--next\t-k d"
    "\t+\t{a,b}\t[1-3]\t|\t>\t~\t...\té\t\u65e5\t\u202e\t\U0001F600\tDELE x\turl = x\t\"upload-file = \"\t!\t^"sv;

TEST(AwkwardNames, ArriveUnchangedAndDoNothingElse) {
    const auto names = split(awkward, '\t');
    for (std::size_t first = 0; first < names.size(); first += 11) {
        const std::string remote = "in " + std::string(names[first]) + "/" + std::string(names[first + 1]);
        const FtpServer server(FtpServer::Kind::odd);
        LocalSite site(server, {}, remote);
        for (std::size_t i = first; i < std::min(first + 11, names.size()); ++i) {
            const std::string path = std::string(names[i]) + "/" + std::string(names[(i * 7) % names.size()]) + "x";
            testing::writeFile(site / path, names[i]);
            site.transport().upload(path, site.fingerprint(path));
        }
        EXPECT_EQ(testing::readTree(server.root() / remote), site.files());
    }
}

TEST(AwkwardNames, LoginsArriveUnchanged) {
    const std::string username = "we\"b\\ us#er";
    const std::string password = "p\"a\\s's {w}:\t %é#";
    FtpServer server(FtpServer::Kind::odd, {.extra = {"--user=" + username, "--password=" + password}});
    server.put("site/a", "x");
    LocalSite site(server);
    site.profile.username = username;
    site.password = password;
    EXPECT_EQ(site.transport().test(), 1U);
}

TEST(AwkwardNames, LineBreaksAreRefusedBeforeAnythingIsSent) {
    EXPECT_THROW((void)quote("a\0b"sv), SyncError);
    EXPECT_EQ(quote("a\"b\\c \r\n\t"), R"("a\"b\\c \r\n\t")") << "not on one line";
    const testing::TemporaryFolder logs;
    const FtpServer server(FtpServer::Kind::odd, {.extra = {"--log", logs / "log"}});
    for (const auto lineBreak : {"\r\n"sv, "\n"sv, "\r"sv, "\u2028"sv, "\0"sv}) {
        for (int field = 0; field < 4; ++field) {
            LocalSite site(server, {{"page", "x"}});
            std::string path = "page";
            auto& spoiled = *std::array{&site.profile.username, &site.password, &site.profile.remoteFolder, &path}.at(
                static_cast<std::size_t>(field));
            spoiled.append(lineBreak).append("DELE x");
            EXPECT_NE(failureOf([&] { site.transport().upload(path, site.fingerprint("page")); }), "") << field;
            EXPECT_FALSE(std::filesystem::exists(logs / "log")) << testing::readFile(logs / "log");
        }
    }
}

TEST(AwkwardNames, NamesThatLeaveTheirFolderAreRefused) {
    const auto urlOf = [](std::string remoteFolder, std::string_view path, bool directory, TransferProtocol transport) {
        Profile profile;
        profile.host = "localhost";
        profile.port = 990;
        profile.transport = transport;
        profile.remoteFolder = std::move(remoteFolder);
        return url(profile, path, directory);
    };
    constexpr auto ftps = TransferProtocol::ftps;
    for (const auto name : {"a"sv, "..."sv, ".htaccess"sv, " "sv, "a\\b"sv, "caf\u00E9"sv, "a\tb"sv, "-rf"sv}) {
        EXPECT_TRUE(validName(name)) << printable(name);
    }
    for (const auto name :
         {""sv, "."sv, ".."sv, "/"sv, "a/b"sv, "a\0b"sv, "a\n"sv, "\v"sv, "\rb"sv, "a\u0085"sv, "\u2029"sv}) {
        EXPECT_FALSE(validName(name)) << printable(name);
    }
    for (const std::string path : {"/a", "a/", "a//b", "/", "a/../b", "./a", "..", "a/b\nc"}) {
        EXPECT_EQ(failureOf([&] { return urlOf("/site", path, false, ftps); }), "Unsafe file path: " + path);
    }
    // "//" begins at the server's root, "/" at the folder of the login.
    EXPECT_EQ(urlOf("/web/a", "b #?\u00E9.txt", false, ftps), "ftp://localhost:990//web/a/b%20%23%3F%C3%A9.txt");
    EXPECT_EQ(urlOf("site//sub/", "d/e", true, ftps), "ftp://localhost:990/site/sub/d/e/");
    EXPECT_EQ(urlOf("site", "", false, ftps), "ftp://localhost:990/site");
    EXPECT_EQ(urlOf("", "", true, ftps), "ftp://localhost:990/");
    EXPECT_EQ(urlOf("/", "", true, ftps), "ftp://localhost:990//");
    EXPECT_EQ(urlOf("../up", "a", false, ftps), "ftp://localhost:990/../up/a");
    EXPECT_EQ(urlOf("", "a", false, TransferProtocol::implicitTLS), "ftps://localhost:990/a");
}

} // namespace
} // namespace zembrastel
