#include "cli/presentation.h"

#include "cli/json_line.h"
#include "cli/relative_path.h"

#include <gtest/gtest.h>
#include <limits>

namespace zembrastel::testing {
namespace {

TEST(Presentation, TextOfManyLinesStaysOnOneLineAndCannotDriveATerminal) {
    EXPECT_EQ(
        oneLine("curl: (60) SSL certificate problem\nMore details here:\r\n  https://x \n\n curl failed \t to\n"),
        "curl: (60) SSL certificate problem More details here: https://x curl failed to");
    EXPECT_EQ(
        oneLine("curl: (60) SSL certificate problem: x\nMore details here: https://curl.se/docs/sslcerts.html\n\ncurl "
                "failed to\nhow to fix it, please visit the web page mentioned above. Retrying in 5 seconds."),
        "curl: (60) SSL certificate problem: x. Retrying in 5 seconds.");
    EXPECT_EQ(oneLine("a\u2028b\u00a0c"), "a b c");
    EXPECT_EQ(oneLine("\x1b[2J\x07x\xff"), "\\x1B[2J\\x07x\\xFF");
    EXPECT_EQ(oneLine(" \n "), "");
}

TEST(Presentation, SentencesEndOnce) {
    EXPECT_EQ(sentence("curl: (67) Access denied: 530"), "curl: (67) Access denied: 530.");
    EXPECT_EQ(sentence("Done.\n"), "Done.");
    EXPECT_EQ(counted(1, "file"), "1 file");
    EXPECT_EQ(counted(0, "file"), "0 files");
    EXPECT_EQ(counted(999, "byte"), "999 bytes");
    EXPECT_EQ(counted(1234567, "byte"), "1,234,567 bytes");
}

TEST(Presentation, NoDateOfAServerIsTooFarAwayToShow) {
    using Seconds = std::chrono::duration<double>;
    EXPECT_EQ(universalTime(systemTime(Seconds(1577882096.75))), "2020-01-01T12:34:56Z");
    EXPECT_EQ(universalTime(systemTime(Seconds(-0.5))), "1969-12-31T23:59:59Z");
    for (const double far :
         {1e300, -1e300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(universalTime(systemTime(Seconds(far))).empty());
    }
}

TEST(JsonLine, EveryTextBecomesOneValidLine) {
    struct File {
        std::string path;
        bool both;
    };
    JsonLine object("review");
    object.text("profile", "a \"b\"\n").text("bytes", "x\xff").number("files", 18446744073709551615U).flag("new", true);
    object.list("list", std::vector<File>{{"é", true}, {"b", false}}, [](JsonLine& json, const File& file) {
        json.text("path", file.path).flag("both", file.both);
    });
    EXPECT_EQ(
        object.finished(), R"({"event":"review","profile":"a \"b\"\n","bytes":"x\\xFF","files":18446744073709551615,)"
                           R"("new":true,"list":[{"path":"é","both":true},{"path":"b","both":false}]})");
}

TEST(RelativePath, TypedPathNamesTheSameFolderHoweverItIsWritten) {
    for (const char* root : {"", ".", "/", "./", "//."}) EXPECT_EQ(relativePath(root), "");
    for (const char* images : {"a/images", "/a/images/", "./a//./images"}) EXPECT_EQ(relativePath(images), "a/images");
    EXPECT_EQ(relativePath("../x"), "../x"); // not silently another folder
    EXPECT_EQ(relativePath(".htaccess"), ".htaccess");
}

} // namespace
} // namespace zembrastel::testing
