#include "model/profile.h"

#include "support/local_site.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

const auto incomplete = "Enter a name, server, username and local folder.";
const auto badHost = "Use a hostname or IPv4 address without ftp://, a path or a port. Enter the port separately.";
const auto badUsername = "The FTP username cannot contain a colon or a line break.";
const auto badRemoteFolder = "Enter a remote folder without . or .. path components.";
const auto noLocalFolder = "Choose an existing local folder.";

class ProfileValidation : public ::testing::Test {
protected:
    ProfileValidation() {
        good.name = "Site";
        good.host = "ftp.example.org";
        good.username = "user";
        good.localFolder = folder.path();
    }

    // Nothing when it passes.
    static std::string complaint(const Profile& profile) {
        return testing::failureOf([&] { return profile.validated(); });
    }

    // Puts each of the values alone into a good profile.
    template <class Field, class Values>
    void expectEach(const std::string& message, Field field, const Values& values) {
        for (const auto& value : values) {
            auto profile = good;
            profile.*field = value;
            EXPECT_EQ(complaint(profile), message) << ::testing::PrintToString(value);
        }
    }

    testing::TemporaryFolder folder;
    Profile good;
};

TEST_F(ProfileValidation, EveryBrokenFieldIsNamedBeforeTheServerSeesIt) {
    for (const auto field : {&Profile::name, &Profile::host}) expectEach(incomplete, field, Texts{"", " \t", "\u2028"});
    for (const auto field : {&Profile::username, &Profile::localFolder}) expectEach(incomplete, field, Texts{""});
    expectEach(
        badHost, &Profile::host,
        Texts{"ftp://a", "a/b", "u@a", "a?b", "a#b", "a\\b", "a\"b", "a b", "a\u00A0b", "a:21", "::1"});
    expectEach(badHost, &Profile::port, std::vector{INT64_MIN, INT64_C(-1), INT64_C(0), INT64_C(65536), INT64_MAX});
    expectEach("", &Profile::port, std::vector{1, 65535});
    expectEach(badUsername, &Profile::username, Texts{"a:b", "a\nb", "a\r\n", "\u0085", "a\u2029", "\v", "a\0b"s});
    expectEach(
        badRemoteFolder, &Profile::remoteFolder,
        Texts{"", "/a/../b", "./x", "..", "a/.", "/a\nb", "/a\u2028", "/a\0b"s});
    expectEach("", &Profile::remoteFolder, Texts{"/a//b/", "/", "...", ".a/..b", " "});
    testing::writeFile(folder / "file", "x");
    expectEach(
        noLocalFolder, &Profile::localFolder,
        Texts{folder / "missing", folder / "file", folder / "file/x", folder.path().string() + "\0x"s});
}

TEST_F(ProfileValidation, TextThatStopsEverySaveIsRefused) {
    const auto real = folder.path().string() + "/caf\xE9";
    std::filesystem::create_directory(real);
    std::filesystem::create_directory_symlink(real, folder / "link");
    expectEach(
        "The local folder cannot be used, because its path is not valid UTF-8: " + folder.path().string()
            + "/caf\\xE9. Rename the folder or choose another.",
        &Profile::localFolder, Texts{real, folder / "link"});
    const auto badText = "The name, the server, the username, the remote folder, the exclusions and the selected paths "
                         "must be valid UTF-8.";
    for (const auto field : {&Profile::name, &Profile::host, &Profile::username, &Profile::remoteFolder}) {
        expectEach(badText, field, Texts{"a\xFF", "\xED\xA0\x80"});
    }
    expectEach(badText, &Profile::exclusions, std::vector{Exclusions("*.\xE9")});
    for (const auto field : {&Profile::initialDownloadSelection, &Profile::syncSelection}) {
        expectEach(badText, field, std::vector{DownloadSelection{.rules = {{"caf\xE9", true}}}});
    }
}

TEST_F(ProfileValidation, OnlyBlanksAndLinksAreChanged) {
    std::filesystem::create_directory(folder / "real");
    std::filesystem::create_directory_symlink(folder / "real", folder / "link");
    auto expected = good;
    expected.username = " ";
    expected.remoteFolder = " /a ";
    expected.exclusions = Exclusions(" x ");
    expected.initialDownloadSelection = DownloadSelection{.rules = {{"a", false}}};
    expected.localFolder = folder / "real";
    auto typed = expected;
    typed.name = "\u2003\n Site \r\n";
    typed.host = "\tftp.example.org\u0085";
    typed.localFolder = folder / "link/../link/";
    EXPECT_EQ(typed.validated(), expected);
}

TEST_F(ProfileValidation, AnotherServerIsNotTrusted) {
    const auto key = KeyHash::parse("sha256//" + std::string(43, 'A') + "=");
    EXPECT_EQ(key, KeyHash::parse(std::string(32, '0') + ": " + std::string(32, '0')));
    EXPECT_FALSE(KeyHash::parse(std::string(62, '0')) || KeyHash::parse("sha256//" + std::string(42, 'A')));
    good.trustedKey = TrustedKey{.key = *key, .host = good.host, .port = good.port};
    EXPECT_TRUE(good.validated().trustedKey);
    const auto keeps = [this](const auto& change) {
        Profile changed = good;
        change(changed);
        return changed.validated().trustedKey.has_value();
    };
    EXPECT_TRUE(keeps([](Profile& changed) { changed.remoteFolder = "/other"; }));
    EXPECT_FALSE(keeps([](Profile& changed) { changed.host = "other"; }));
    EXPECT_FALSE(keeps([](Profile& changed) { changed.port += 1; }));
    EXPECT_FALSE(keeps([](Profile& changed) { changed.transport = TransferProtocol::ftp; }));
}

TEST(Profile, EmptySyncSelectionOverridesTheInitialOne) {
    Profile profile;
    EXPECT_FALSE(profile.hasEmptySyncSelection());
    EXPECT_TRUE(profile.includesInSync("a") && profile.visitsForSync("a"));
    profile.initialDownloadSelection = DownloadSelection{.rules = {{"a/b", true}}};
    EXPECT_FALSE(profile.hasEmptySyncSelection());
    EXPECT_TRUE(profile.includesInSync("a/b") && profile.visitsForSync("a"));
    EXPECT_FALSE(profile.includesInSync("a") || profile.visitsForSync("b"));
    profile.syncSelection = DownloadSelection{};
    EXPECT_TRUE(profile.hasEmptySyncSelection());
    EXPECT_FALSE(profile.includesInSync("a/b") || profile.visitsForSync(""));
}

} // namespace
} // namespace zembrastel
