#include "app/context/main_context.h"
#include "app/remote_folders.h"
#include "support/ftp_server.h"
#include "support/local_site.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::FtpServer;

// The folders of a server whose "/" is the machine's own, so that the login folder lies deep below it.
struct Folders {
    explicit Folders(const std::string& remoteFolder, FtpServer::Kind kind = FtpServer::Kind::vsftpd)
        : server(kind), site(server) {
        fs::create_directories(server.root() / "site/shop");
        fs::create_directory(server.root() / "free");
        server.handOver();
        site.profile.remoteFolder = remoteFolder;
        folders = std::make_unique<RemoteFolders>(context, site.profile, site.password, [] {});
    }

    // A path below the served folder, as the folders name it.
    [[nodiscard]] std::string at(const std::string& below) const { return server.remoteFolder(below).substr(1); }

    [[nodiscard]] bool reaches(const std::string& path) {
        return context.runUntil([&] { return folders->target() == path; }, 30s);
    }

    MainQueue context;
    FtpServer server;
    testing::LocalSite site;
    std::unique_ptr<RemoteFolders> folders;
};

TEST(RemoteFolders, OpenAtTheEnteredFolder) {
    struct Case {
        std::string entered;
        std::string opened; // below the login folder
    };
    for (const auto& [entered, opened] :
         {Case{"site/shop", "site/shop"}, Case{"", ""}, Case{"site/gone/deeper", "site"}, Case{"/nowhere/shop", ""}}) {
        SCOPED_TRACE(entered);
        Folders choice(entered);
        choice.folders->connect();
        ASSERT_TRUE(choice.reaches(choice.at(opened)));
        EXPECT_EQ(choice.folders->loginFolder(), choice.at(""));
    }
}

TEST(RemoteFolders, NewFolderAppearsOrItsRefusalIsExplained) {
    Folders choice("");
    auto& folders = *choice.folders;
    folders.connect();
    ASSERT_TRUE(choice.reaches(choice.at("")));
    folders.toggle(choice.at(""));
    ASSERT_TRUE(choice.context.runUntil([&] { return folders.isLoaded(choice.at("")); }, 30s));
    folders.create(choice.at("free"), "neu \"1\"");
    ASSERT_TRUE(choice.reaches(choice.at("free/neu \"1\"")));
    EXPECT_EQ(folders.creation(), std::nullopt);
    EXPECT_TRUE(fs::is_directory(choice.server.root() / "free/neu \"1\""));

    choice.server.put("free/file", "");
    const auto refusal = [&](const std::string& name) {
        folders.create(choice.at("free"), name);
        EXPECT_TRUE(choice.context.runUntil([&] { return !folders.creation()->failure.empty(); }, 30s));
        return folders.creation()->failure;
    };
    EXPECT_EQ(refusal("file"), "The server did not create the folder " + choice.server.remoteFolder("free/file") + ".");
    EXPECT_EQ(refusal("a/b"), "A folder cannot have this name: a/b");
}

TEST(RemoteFolders, LostServerIsReportedAndFoundAgain) {
    Folders choice("site");
    choice.server.stop();
    auto& folders = *choice.folders;
    folders.connect();
    ASSERT_TRUE(choice.context.runUntil([&] { return !folders.failure().empty(); }, 30s));
    EXPECT_EQ(folders.loginFolder(), std::nullopt);
    choice.server.restart();
    folders.connect();
    EXPECT_TRUE(choice.reaches(choice.at("site")));
}

} // namespace
} // namespace zembrastel
