#include "transport/remote_url.h"

#include "model/error.h"
#include "platform/child_process.h"
#include "platform/text.h"
#include "platform/uuid.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace zembrastel {
namespace {

using namespace std::string_view_literals;

Profile profileAt(std::string remoteFolder, TransferProtocol transport = TransferProtocol::ftp) {
    Profile profile;
    profile.host = "localhost";
    profile.port = 21;
    profile.transport = transport;
    profile.remoteFolder = std::move(remoteFolder);
    return profile;
}

TEST(RemoteUrl, NameThatLeavesItsFolderOrItsLineIsNotValid) {
    for (const std::string_view name :
         {"a"sv, "..."sv, ".htaccess"sv, " "sv, "a\\b"sv, "caf\u00E9"sv, "a\tb"sv, "-rf"sv}) {
        EXPECT_TRUE(validName(name)) << printable(name);
    }
    for (const std::string_view name :
         {""sv, "."sv, ".."sv, "/"sv, "a/b"sv, "a\0b"sv, "a\n"sv, "\v"sv, "a\fb"sv, "\rb"sv, "a\u0085"sv, "a\u2028b"sv,
          "\u2029"sv, "/\u0338"sv}) {
        EXPECT_FALSE(validName(name)) << printable(name);
    }
}

TEST(RemoteUrl, FolderOfTheServerAndOfTheLoginAreToldApart) {
    EXPECT_EQ(
        url(profileAt("/public_html/folder"), "a #?\u00E9.txt", false),
        "ftp://localhost:21//public_html/folder/a%20%23%3F%C3%A9.txt");
    EXPECT_EQ(url(profileAt("site//sub/"), "d/e", true), "ftp://localhost:21/site/sub/d/e/");
    EXPECT_EQ(url(profileAt("site"), "", true), "ftp://localhost:21/site/");
    EXPECT_EQ(url(profileAt("site"), "", false), "ftp://localhost:21/site");
    EXPECT_EQ(url(profileAt(""), "", true), "ftp://localhost:21/");
    EXPECT_EQ(url(profileAt("/"), "", true), "ftp://localhost:21//");
    EXPECT_EQ(url(profileAt("/"), "a", false), "ftp://localhost:21//a");
    EXPECT_EQ(url(profileAt("../up"), "a", false), "ftp://localhost:21/../up/a");
}

TEST(RemoteUrl, OnlyImplicitTlsHasItsOwnScheme) {
    EXPECT_EQ(url(profileAt("", TransferProtocol::ftps), "a", false), "ftp://localhost:21/a");
    EXPECT_EQ(url(profileAt("", TransferProtocol::implicitTLS), "a", false), "ftps://localhost:21/a");
}

TEST(RemoteUrl, UnsafePathNeverReachesTheServer) {
    for (const std::string path : {"/a", "a/", "a//b", "/", "a/../b", "./a", "..", "a/b\nc", "a\u2028"}) {
        try {
            EXPECT_EQ(url(profileAt("/site"), path, false), "an error");
        } catch (const SyncError& error) {
            EXPECT_EQ(error.what(), "Unsafe file path: " + path);
        }
    }
}

TEST(CurlQuoting, OneValueStaysOnOneLineAndANullCharacterIsRefused) {
    EXPECT_THROW((void)quote("a\0b"sv), SyncError);
    EXPECT_EQ(quote("a\"b\\c \r\n\t"), R"("a\"b\\c \r\n\t")");
}

class TemporaryFolder {
public:
    TemporaryFolder() : place(std::filesystem::temp_directory_path() / ("quoting-" + Uuid::random().text())) {
        std::filesystem::create_directory(place);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(place); }

    [[nodiscard]] const std::filesystem::path& path() const { return place; }

private:
    std::filesystem::path place;
};

// curl copies a file to each awkward name: a name that it read differently makes another file.
TEST(CurlQuoting, CurlReadsBackWhatWasQuoted) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "source") << "x";
    const std::set<std::string> names{
        R"(quote"and\backslash)",
        R"(\\"")",
        "\\",
        R"(written \n \r \t \v)",
        "line\nfeed",
        "carriage\rreturn",
        "tab\tstop",
        "\v\f\x1B\x7F",
        "  blanks  ",
        "#hash",
        "a = b : c",
        "'single'",
        "caf\u00E9\u2028",
        "-k",
        "$HOME `x` %20 {a,b} [1-3]"};
    std::string configuration = "silent\ngloboff\n";
    for (const std::string& name : names) {
        configuration += "url = " + quote("file://" + (folder.path() / "source").string()) + '\n';
        configuration += "output = " + quote((folder.path() / name).string()) + '\n';
    }
    ChildProcess curl({.executable = "/usr/bin/curl", .arguments = {"--disable", "--config", "-"}});
    curl.start();
    EXPECT_TRUE(curl.writeInput(configuration));
    curl.closeInput();
    curl.wait();
    EXPECT_EQ(curl.collect().code, 0);

    std::set<std::string> made;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) made.insert(entry.path().filename());
    made.erase("source");
    EXPECT_EQ(made, names);
}

} // namespace
} // namespace zembrastel
