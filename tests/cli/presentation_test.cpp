#include "cli/text/presentation.h"

#include "cli/session/profile_choice.h"
#include "cli/terminal/json_line.h"

#include <gtest/gtest.h>
#include <limits>

namespace zembrastel::testing {

using namespace cli;

namespace {

TEST(Presentation, TextOfManyLinesIsOneSentenceAndCannotDriveATerminal) {
    EXPECT_EQ(
        oneLine("SSL problem\nMore:\r\n  https://x \n\n a\u2028b\u00a0c \t to\n"),
        "SSL problem More: https://x a b c to");
    EXPECT_EQ(oneLine("\x1b[2J\x07x\xff"), "\\x1B[2J\\x07x\\xFF");
    EXPECT_EQ(oneLine(" \n "), "");
    EXPECT_EQ(
        oneLine("curl: (60) SSL certificate problem: x\nMore details here: https://curl.se/docs/sslcerts.html\n\ncurl "
                "failed to\nhow to fix it, please visit the web page mentioned above. Retrying in 5 seconds."),
        "curl: (60) SSL certificate problem: x. Retrying in 5 seconds.");
    EXPECT_EQ(sentence("curl: (67) Access denied: 530"), "curl: (67) Access denied: 530.");
    EXPECT_EQ(sentence("Done.\n"), "Done.");
    EXPECT_EQ(counted(1, "file"), "1 file");
    EXPECT_EQ(counted(0, "file"), "0 files");
    EXPECT_EQ(counted(999, "byte"), "999 bytes");
    EXPECT_EQ(counted(1234567, "byte"), "1,234,567 bytes");
}

TEST(Presentation, NoDateOfAServerIsTooFarAwayToShow) {
    const auto shown = [](double seconds) { return universalTime(systemTime(std::chrono::duration<double>(seconds))); };
    EXPECT_EQ(shown(1577882096.75), "2020-01-01T12:34:56Z");
    EXPECT_EQ(shown(-0.5), "1969-12-31T23:59:59Z");
    using Limits = std::numeric_limits<double>;
    for (const double far : {1e300, -1e300, Limits::infinity(), Limits::quiet_NaN()}) EXPECT_NE(shown(far), "");
}

TEST(JsonLine, EveryTextBecomesOneValidLine) {
    JsonLine object("review");
    object.text("profile", "a \"b\"\n").text("bytes", "x\xff").number("files", 18446744073709551615U);
    object.list("list", std::vector{"é", "b"}, [](JsonLine& json, const char* path) {
        json.text("path", path).flag("new", true);
    });
    EXPECT_EQ(
        object.finished(), R"({"event":"review","profile":"a \"b\"\n","bytes":"x\\xFF","files":18446744073709551615,)"
                           R"("list":[{"path":"é","new":true},{"path":"b","new":true}],"version":1})");
    EXPECT_EQ(asJsonLine("profile", R"({"a":1})"), R"({"event":"profile","a":1,"version":1})");
}

TEST(RelativePath, TypedPathNamesTheSameFolderHoweverItIsWritten) {
    for (const char* root : {"", ".", "/", "./", "//."}) EXPECT_EQ(relativePath(root), "");
    for (const char* images : {"a/images", "/a/images/", "./a//./images"}) EXPECT_EQ(relativePath(images), "a/images");
    EXPECT_EQ(relativePath("../.htaccess"), "../.htaccess"); // not silently another folder
}

} // namespace
} // namespace zembrastel::testing
