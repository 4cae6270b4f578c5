#include "transport/curl/remote_url.h"

#include "platform/text.h"
#include "support/local_site.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::string_view_literals;
using testing::failureOf;

std::string urlOf(
    std::string remoteFolder, std::string_view path, bool directory,
    TransferProtocol transport = TransferProtocol::ftps) {
    Profile profile;
    profile.host = "localhost";
    profile.port = 990;
    profile.transport = transport;
    profile.remoteFolder = std::move(remoteFolder);
    return url(profile, path, directory);
}

TEST(RemoteUrl, NameThatLeavesItsFolderOrItsLineIsNotValid) {
    for (const auto name : {"a"sv, "..."sv, ".htaccess"sv, " "sv, "a\\b"sv, "caf\u00E9"sv, "a\tb"sv, "-rf"sv}) {
        EXPECT_TRUE(validName(name)) << printable(name);
    }
    for (const auto name :
         {""sv, "."sv, ".."sv, "/"sv, "a/b"sv, "a\0b"sv, "a\n"sv, "\v"sv, "\rb"sv, "a\u0085"sv, "\u2029"sv}) {
        EXPECT_FALSE(validName(name)) << printable(name);
    }
    for (const std::string path : {"/a", "a/", "a//b", "/", "a/../b", "./a", "..", "a/b\nc"}) {
        EXPECT_EQ(failureOf([&] { return urlOf("/site", path, false); }), "Unsafe file path: " + path);
    }
}

TEST(RemoteUrl, FolderOfTheServerAndOfTheLoginAreToldApart) {
    EXPECT_EQ(urlOf("/web/a", "b #?\u00E9.txt", false), "ftp://localhost:990//web/a/b%20%23%3F%C3%A9.txt");
    EXPECT_EQ(urlOf("site//sub/", "d/e", true), "ftp://localhost:990/site/sub/d/e/");
    EXPECT_EQ(urlOf("site", "", false), "ftp://localhost:990/site");
    EXPECT_EQ(urlOf("", "", true), "ftp://localhost:990/");
    EXPECT_EQ(urlOf("/", "", true), "ftp://localhost:990//");
    EXPECT_EQ(urlOf("../up", "a", false), "ftp://localhost:990/../up/a");
    EXPECT_EQ(urlOf("", "a", false, TransferProtocol::implicitTLS), "ftps://localhost:990/a");
}

// curl copies a file to each awkward name: a name that it read differently makes another file.
TEST(CurlQuoting, CurlReadsBackWhatWasQuotedAndANullCharacterIsRefused) {
    EXPECT_THROW((void)quote("a\0b"sv), SyncError);
    EXPECT_EQ(quote("a\"b\\c \r\n\t"), R"("a\"b\\c \r\n\t")") << "not on one line";
    const testing::TemporaryFolder folder;
    testing::writeFile(folder / "source", "x");
    std::filesystem::create_directory(folder / "made");
    testing::FileTree expected;
    std::string configuration = "silent\ngloboff\n";
    for (const auto* name :
         {R"(quote"and\backslash)", R"(\\"")", "\\", R"(written \n \r \t \v)", "line\nfeed", "carriage\rreturn",
          "tab\tstop", "\v\f\x1B\x7F", "  blanks  ", "#hash", "a = b : c", "'single'", "caf\u00E9\u2028", "-k",
          "$HOME `x` %20 {a,b} [1-3]"}) {
        expected[name] = "x";
        configuration += "url = " + quote("file://" + (folder / "source").string()) + '\n';
        configuration += "output = " + quote((folder / "made" / name).string()) + '\n';
    }
    testing::writeFile(folder / "configuration", configuration);
    EXPECT_EQ(testing::runProgram({"/usr/bin/curl", "--disable", "--config", folder / "configuration"}).status, 0);
    EXPECT_EQ(testing::readTree(folder / "made"), expected);
}

} // namespace
} // namespace zembrastel
