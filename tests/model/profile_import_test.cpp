// Files of other programs, kind and hostile.
#include "model/error.h"
#include "model/import/profile_import.h"
#include "model/saved_state.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

using Texts = std::vector<std::string>;

std::string siteManager(const std::string& sites) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<FileZilla3 version=\"3.63\">\n<Servers>\n" + sites
           + "\n</Servers>\n</FileZilla3>\n";
}

std::string server(const std::string& elements) { return "<Server><Host>h</Host>" + elements + "</Server>"; }

ProfilesFound found(const std::string& bytes, const std::string& file = "/w/.vscode/sftp.json") {
    return findProfiles(bytes, file);
}

Profile only(const std::string& bytes) {
    const auto all = found(bytes);
    EXPECT_EQ(all.candidates.size(), 1U);
    return all.candidates.empty() ? Profile{} : all.candidates.front().profile;
}

// All that a source may tell, in the order of the form that the user then completes.
Texts told(const ProfileCandidate& candidate) {
    const auto& profile = candidate.profile;
    return {
        profile.name,
        profile.host,
        std::to_string(profile.port),
        std::string(rawValue(profile.transport)),
        profile.username,
        candidate.password.value_or("none"),
        profile.remoteFolder,
        profile.localFolder};
}

TEST(ProfileImport, SitesAreImportedOrSkippedWithAReason) {
    const auto all = found(siteManager(R"(
      <Folder expanded="1">Customers
        <Folder>Empty</Folder>
        <Server>
          <Host>ftp.example.com</Host><Port>2121</Port><Protocol>4</Protocol><Type>0</Type><User>wéb &amp; co</User>
          <Pass encoding="base64">cMOkc3M6IHfDtnJk</Pass><Logontype>1</Logontype><Name>Site</Name>
          <LocalDir>/srv/site</LocalDir><RemoteDir>1 0 3 a é 3 www</RemoteDir>
        </Server>
      </Folder>
      <Server><Host>ssh.example.com</Host><Protocol>1</Protocol><Name>Shell</Name></Server>
      <Server><Host>s3.example.com</Host><Protocol>7</Protocol><Name>Bucket</Name></Server>
      <Server><Host>old.example.com</Host><Protocol>3</Protocol><User>u</User><Pass>plain</Pass>Site</Server>
      <Server><Host>w</Host><Protocol>6</Protocol><Name>Locked</Name><LocalDir>C:\site</LocalDir>
        <Pass encoding="crypt" pubkey="x">abc</Pass></Server>)"));
    ASSERT_EQ(all.candidates.size(), 3U);
    const auto& site = all.candidates[0];
    EXPECT_EQ(
        told(site),
        (Texts{"Site", "ftp.example.com", "2121", "FTPS (TLS)", "wéb & co", "päss: wörd", "/a é/www", "/srv/site"}));
    EXPECT_FALSE(site.profile.enabled);
    EXPECT_TRUE(site.notes.empty());
    EXPECT_EQ(
        told(all.candidates[1]),
        (Texts{"Site 2", "old.example.com", "990", "FTPS (implicit TLS)", "u", "plain", "/", ""}));
    EXPECT_EQ(told(all.candidates[2]), (Texts{"Locked", "w", "21", "FTP", "", "none", "/", ""}));
    EXPECT_EQ(all.candidates[2].notes.size(), 3U);

    ASSERT_EQ(all.skipped.size(), 2U);
    EXPECT_EQ(all.skipped[0].name, "Shell");
    EXPECT_EQ(all.skipped[0].reason, "It uses SFTP; only FTP and FTPS are supported.");
    EXPECT_EQ(all.skipped[1].reason, "It uses neither FTP nor FTPS.");
}

TEST(ProfileImport, ManySitesOfOneNameTakeLinearTime) {
    std::string sites;
    constexpr int count = 20'000; // some minutes, if each name were compared with all others
    for (int site = 0; site < count; ++site) sites += "<Server><Host>h</Host><Name>x</Name></Server>";
    const auto all = findProfiles("<FileZilla3><Servers>" + sites + "</Servers></FileZilla3>", "sites.xml");
    ASSERT_EQ(all.candidates.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(all.candidates.front().profile.name, "x");
    EXPECT_EQ(all.candidates.back().profile.name, "x " + std::to_string(count));
}

TEST(ProfileImport, RemoteFolderIsExactlyTheSites) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "/"},
        {"1 0", "/"},
        {"1 0 3 a/b", "/"},
        {"1 0 9 a", "/a"},
        {"1 0 x a", "/"},
        {"1 0 1 ab", "/"},
        {"1 2 C: 1 a", "/"},
        {"2 0 1 a", "/"},
        {"1 0 99999999999999999999 a", "/"},
        {"1 0 2 \xF0\x9F\x98\x80 1 b", "/\xF0\x9F\x98\x80/b"},  // counted by Windows
        {"1 0 1 \xF0\x9F\x98\x80 1 b", "/\xF0\x9F\x98\x80/b"}}; // and elsewhere
    for (const auto& [text, folder] : cases) {
        const auto profile = only(siteManager(server("<Protocol>4</Protocol><RemoteDir>" + text + "</RemoteDir>")));
        EXPECT_EQ(profile.remoteFolder, folder) << text;
    }
}

TEST(ProfileImport, PasswordThatCannotBeUsedIsLeftOut) {
    for (const char* pass :
         {R"(<Pass encoding="base64">!!!</Pass>)", R"(<Pass encoding="base64">YQpi</Pass>)",
          R"(<Pass encoding="base64">/w==</Pass>)", R"(<Pass encoding="base64">A</Pass>)",
          R"(<Pass encoding="rot13">abc</Pass>)"}) {
        const auto all =
            found(siteManager(server("<Protocol>4</Protocol><RemoteDir>1 0</RemoteDir>" + std::string(pass))));
        ASSERT_EQ(all.candidates.size(), 1U);
        EXPECT_EQ(all.candidates[0].password, std::nullopt) << pass;
        EXPECT_EQ(all.candidates[0].notes.size(), 1U) << pass;
    }
}

TEST(ProfileImport, WorkspaceWithCommentsAndVariantsIsRead) {
    const auto all = found(R"(// mine
      [{ "name": "Web", "protocol": "ftp", "host": "ftp.example.com", "port": 2121, /* usual */
         "username": "web", "password": "hush", "secure": true, "context": "./public/", "remotePath": "./htdocs//x",
         "ignore": [".git", "/draft.txt", "build/", "**/*.psd", "docs/old", "!keep", "a/**/b", "**/x/y", "tmp/**"],
         "profiles": { "live": {}, "test": {"host": "test.example.com", "secure": "implicit", "port": null}, }, },
       {"host": "h"}, {"protocol": "ftp"}])");
    ASSERT_EQ(all.candidates.size(), 2U);
    const auto& live = all.candidates[0];
    EXPECT_EQ(
        told(live),
        (Texts{"Web (live)", "ftp.example.com", "2121", "FTPS (TLS)", "web", "hush", "htdocs/x", "/w/public"}));
    EXPECT_EQ(live.notes.size(), 3U); // of what it ignores
    for (const char* path : {".vscode/sftp.json", "draft.txt", "build/x", "a/b.psd", "docs/old/a", "tmp/a"}) {
        EXPECT_TRUE(live.profile.excludes(path)) << path;
    }
    EXPECT_FALSE(live.profile.excludes("index.html"));
    EXPECT_EQ(all.candidates[1].profile.host, "test.example.com");
    EXPECT_EQ(all.candidates[1].profile.transport, TransferProtocol::implicitTLS);
    EXPECT_EQ(all.candidates[1].profile.port, 990);
    ASSERT_EQ(all.skipped.size(), 2U);
    EXPECT_EQ(all.skipped[0].reason, "It uses SFTP; only FTP and FTPS are supported.");
    EXPECT_EQ(all.skipped[1].reason, "It names no server.");

    EXPECT_EQ(found(R"({"protocol":"ftp","host":"h"})", "/w/sftp.json").candidates[0].profile.localFolder, "");
}

TEST(ProfileImport, ImportEnablesAndTrustsNothing) {
    Profile profile;
    profile.name = "x";
    profile.enabled = true;
    profile.syncSelection = DownloadSelection{{{"a", true}}};
    profile.trustedKey = TrustedKey{.key = {}, .host = "h", .port = 21};
    const auto back = only(encode(ProfileExport{.profiles = {profile}}));
    profile.enabled = false;
    profile.trustedKey.reset();
    EXPECT_EQ(back, profile);
    EXPECT_THROW(found(R"({"zembrastelProfiles":2,"profiles":[]})"), SyncError);
    EXPECT_THROW(found(R"({"zembrastelProfiles":1,"profiles":[{}]})"), SyncError);
}

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t count = 0; count < times; ++count) all += text;
    return all;
}

TEST(ProfileImport, HostileFilesDoNoHarm) {
    const std::string laughs = R"(<?xml version="1.0"?><!DOCTYPE x [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;">
      <!ENTITY f SYSTEM "file:///etc/hostname">]><FileZilla3><Servers>)"
                               + server("<Name>&b;&f;</Name><Protocol>4</Protocol>") + "</Servers></FileZilla3>";
    EXPECT_EQ(only(laughs).name, "&b;&f;");
    constexpr std::size_t many = 200'000;
    const auto deep = siteManager(
        repeated("<Folder>", many) + server("<Name>deep</Name><Protocol>4</Protocol>") + repeated("</Folder>", many));
    EXPECT_EQ(only(deep).name, "deep");
    const std::vector<std::string> refused{
        "",
        "   ",
        "<",
        "<FileZilla3><Servers>",
        "<html></html>",
        siteManager(server("<User>\xFF</User>")),
        std::string("<\0/>", 4),
        "{",
        "7",
        R"({"protocol":"ftp","host":"\uD800"})",
        "{\"protocol\":\"ftp\",\"host\":\"\xFF\"}",
        repeated("[", many),
        "/* " + repeated("*", many),
        R"({"zembrastelProfiles":1,"profiles":)" + repeated("[", many),
        std::string(largestImport + 1, ' ')};
    for (const auto& bytes : refused) {
        EXPECT_THROW((void)found(bytes), SyncError) << bytes.substr(0, 60);
    }
    EXPECT_TRUE(found(repeated("[", many) + repeated("]", many)).candidates.empty());
}

TEST(ProfileImport, OnlyFilesAreRead) {
    const TemporaryFolder folder;
    EXPECT_THROW((void)readProfiles("/dev/zero"), SyncError);
    EXPECT_THROW((void)readProfiles(folder.path()), SyncError);
    EXPECT_THROW((void)readProfiles(folder.path() / "none"), std::exception);
}

} // namespace
} // namespace zembrastel::testing
