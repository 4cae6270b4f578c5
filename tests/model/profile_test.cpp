#include "model/profile.h"

#include "model/error.h"
#include "platform/private_folder.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::string_literals;

const std::string incomplete = "Enter a name, server, username and local folder.";
const std::string badHost =
    "Use a hostname or IPv4 address without ftp://, a path or a port. Enter the port separately.";
const std::string badUsername = "The FTP username cannot contain a colon or a line break.";
const std::string badRemoteFolder = "Enter a remote folder without . or .. path components.";
const std::string nothingChosen = "Choose the initial download files and folders before starting. Open Edit profile, "
                                  "choose the contents, and save your selection.";
const std::string noLocalFolder = "Choose an existing local folder.";

class ProfileValidation : public testing::Test {
protected:
    // What validated() says to a good profile with one change; nothing when it passes.
    std::string complaint(const std::function<void(Profile&)>& change) {
        auto profile = good();
        change(profile);
        try {
            (void)profile.validated();
            return "";
        } catch (const SyncError& error) {
            return error.what();
        }
    }

    [[nodiscard]] Profile good() const {
        Profile profile;
        profile.name = "Site";
        profile.host = "ftp.example.org";
        profile.username = "user";
        profile.localFolder = folder.path().string();
        return profile;
    }

    PrivateFolder folder;
};

TEST_F(ProfileValidation, BlanksAroundNameAndHostAreNotSavedAndNothingElseIsTouched) {
    auto profile = good();
    profile.name = "\u2003\n Site \r\n";
    profile.host = "\tftp.example.org\u0085";
    profile.username = " ";
    profile.remoteFolder = " /a ";
    profile.exclusions = Exclusions(" x ");
    auto expected = profile;
    expected.name = "Site";
    expected.host = "ftp.example.org";
    expected.localFolder = std::filesystem::canonical(folder.path()).string();
    EXPECT_EQ(profile.validated(), expected);
}

TEST_F(ProfileValidation, EveryBrokenFieldIsNamedBeforeTheServerSeesIt) {
    for (const auto* blank : {"", " \t", "\u2028"}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.name = blank; }), incomplete);
        EXPECT_EQ(complaint([&](Profile& p) { p.host = blank; }), incomplete);
    }
    EXPECT_EQ(complaint([](Profile& p) { p.username = ""; }), incomplete);
    EXPECT_EQ(complaint([](Profile& p) { p.localFolder = ""; }), incomplete);
    for (const auto* host : {"ftp://a", "a/b", "u@a", "a?b", "a#b", "a\\b", "a\"b", "a b", "a\u00A0b", "a:21", "::1"}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.host = host; }), badHost) << host;
    }
    for (const std::int64_t port : {INT64_MIN, std::int64_t{-1}, std::int64_t{0}, std::int64_t{65536}, INT64_MAX}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.port = port; }), badHost) << port;
    }
    for (const auto& username : {"a:b"s, "a\nb"s, "a\r\n"s, "\u0085"s, "a\u2029"s, "\v"s, "a\0b"s}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.username = username; }), badUsername) << username;
    }
    for (const auto& remote : {""s, "/a/../b"s, "./x"s, ".."s, "a/."s, "/a\nb"s, "/a\u2028"s, "/a\0b"s}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.remoteFolder = remote; }), badRemoteFolder) << remote;
    }
    std::ofstream(folder.path() / "file").put('x');
    for (const auto& local : {folder.path() / "missing", folder.path() / "file", folder.path() / "file/x"}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.localFolder = local.string(); }), noLocalFolder) << local;
    }
    EXPECT_EQ(complaint([&](Profile& p) { p.localFolder += "\0x"s; }), noLocalFolder);
}

TEST_F(ProfileValidation, UnusualButWorkingSettingsAreAccepted) {
    for (const std::int64_t port : {1, 65535}) EXPECT_EQ(complaint([&](Profile& p) { p.port = port; }), "");
    for (const auto* remote : {"/a//b/", "/", "...", ".a/..b", " "}) {
        EXPECT_EQ(complaint([&](Profile& p) { p.remoteFolder = remote; }), "") << remote;
    }
}

TEST_F(ProfileValidation, TheFirstBrokenRuleIsTheOneReported) {
    // Each entry breaks one rule more than the one after it.
    const std::vector<std::pair<std::string, std::function<void(Profile&)>>> steps{
        {incomplete, [](Profile& p) { p.name = ""; }},
        {badHost, [](Profile& p) { p.host = "a b"; }},
        {badUsername, [](Profile& p) { p.username = "a:b"; }},
        {badRemoteFolder, [](Profile& p) { p.remoteFolder = ".."; }},
        {nothingChosen, [](Profile& p) { p.needsDownload = true; }},
        {noLocalFolder, [](Profile& p) { p.localFolder = "/nonexistent"; }},
    };
    for (auto first = steps.begin(); first != steps.end(); ++first) {
        EXPECT_EQ(
            complaint([&](Profile& profile) {
                for (auto step = first; step != steps.end(); ++step) step->second(profile);
            }),
            first->first);
    }
}

TEST_F(ProfileValidation, ALocalFolderBehindALinkIsKnownByItsRealPath) {
    const auto real = folder.path() / "real";
    std::filesystem::create_directory(real);
    std::filesystem::create_directory_symlink(real, folder.path() / "link");
    auto profile = good();
    profile.localFolder = (folder.path() / "link/../link/").string();
    EXPECT_EQ(profile.validated().localFolder, std::filesystem::canonical(real).string());
}

TEST_F(ProfileValidation, AnInitialDownloadNeedsSomethingChosen) {
    const DownloadSelection onlyFalse{.rules = {{"a", false}}};
    const auto chosen = [](bool needed, const std::optional<DownloadSelection>& selection) {
        return [=](Profile& p) {
            p.needsDownload = needed;
            p.initialDownloadSelection = selection;
        };
    };
    EXPECT_EQ(complaint(chosen(true, std::nullopt)), nothingChosen);
    EXPECT_EQ(complaint(chosen(true, onlyFalse)), nothingChosen);
    EXPECT_EQ(complaint(chosen(false, onlyFalse)), "");
    EXPECT_EQ(complaint(chosen(true, DownloadSelection{.rules = {{"a", true}}})), "");
}

TEST(Profile, TheSyncSelectionOverrulesTheInitialOneEvenWhenItIsEmpty) {
    Profile profile;
    EXPECT_FALSE(profile.hasEmptySyncSelection());
    EXPECT_TRUE(profile.includesInSync("a") && profile.visitsForSync("a"));
    profile.initialDownloadSelection = DownloadSelection{.rules = {{"a", true}}};
    EXPECT_FALSE(profile.hasEmptySyncSelection());
    EXPECT_TRUE(profile.includesInSync("a/b") && profile.visitsForSync("a"));
    EXPECT_FALSE(profile.includesInSync("b") || profile.visitsForSync("b"));
    profile.syncSelection = DownloadSelection{};
    EXPECT_TRUE(profile.hasEmptySyncSelection());
    EXPECT_FALSE(profile.includesInSync("a/b") || profile.visitsForSync(""));
}

TEST(Profile, ProtocolNamesInSavedFilesKeepTheirMeaning) {
    EXPECT_EQ(transferProtocol("FTPS (TLS)"), TransferProtocol::ftps);
    EXPECT_EQ(transferProtocol("FTP"), TransferProtocol::ftp);
    EXPECT_EQ(transferProtocol("FTPS (implicit TLS)"), TransferProtocol::implicitTLS);
    EXPECT_FALSE(transferProtocol("ftp"));
    EXPECT_EQ(defaultPort(TransferProtocol::implicitTLS), 990);
}

} // namespace
} // namespace zembrastel
