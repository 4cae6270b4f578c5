// The line that is written over and over, and that it is there only for somebody who looks.
#include "cli/terminal/live_line.h"
#include "cli_run.h"
#include "support/ftp_server.h"

#include <chrono>
#include <gtest/gtest.h>

namespace zembrastel::testing {

using namespace cli;

namespace {

TEST(LiveLine, WhatMattersFitsWhateverTheWidth) {
    struct Case {
        std::size_t columns;
        const char* line;
    };
    for (const auto& [columns, line] : {
             Case{60, "images/autumn/group-photo.webp  12.4 of 80 MB, 3.1 MB/s"},
             Case{40, "images/…to.webp  12.4 of 80 MB, 3.1 MB/s"},
             Case{30, "12.4 of 80 MB, 3.1 MB/s"},
             Case{9, "12.4…MB/s"},
         }) {
        EXPECT_EQ(liveLine("images/autumn/group-photo.webp", "12.4 of 80 MB, 3.1 MB/s", columns), line);
    }
}

class CliProgress : public ::testing::Test {
protected:
    CliProgress() {
        place.savePassword(server.password());
        Profile profile = profileFor(server, site, server.remoteFolder("site"));
        profile.name = "x";
        writeFile(site / path, "old");
        place.saveProfile(profile);
    }

    // What a review writes that downloads a file in about two seconds. `environment` comes before the command.
    [[nodiscard]] CliResult review(const std::string& environment, const CliPlace::Arguments& more, bool onTerminal) {
        auto content = randomBytes(size);
        content.front() = static_cast<char>('0' + reviews); // a file of equal content is not offered
        server.put("site/" + path, content);
        touch(
            server.root() / "site" / path,
            std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) + std::chrono::hours(++reviews));
        CliPlace::Arguments arguments{
            "review", "x", "--download-all", "--password-file", place.passwordFile().string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const std::string command = environment + " " + place.shellCommand(arguments);
        return place.runInShellWithSecretService(
            onTerminal ? "script -qec " + shellQuoted("stty cols 50; " + command) + " /dev/null < /dev/null" : command);
    }

    static constexpr std::size_t size = 1'500'000;
    FtpServer server{FtpServer::Kind::odd, {.extra = {"--rate", "700000"}}};
    CliPlace place;
    std::filesystem::path site = place.path("site");
    std::string path = "a-folder-with-a-rather-long-name/photograph.jpeg";
    int reviews = 0;
};

TEST_F(CliProgress, TransferIsSeenOnATerminalAndLeavesNothingThere) {
    const auto result = review("TERM=xterm", {}, true);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_TRUE(contains(result.output, " of 1.5 MB")) << result.errors;
    EXPECT_TRUE(contains(result.output, "…"));
    EXPECT_FALSE(contains(result.output, "\x1b[3")) << "no colour was asked for";
    EXPECT_TRUE(result.output.ends_with(
        "\r\x1b[KDownloaded newer server copy: " + path
        + " (previous local copy backed up)\r\nDecided. Watching can go on.\r\n"))
        << result.output;
    EXPECT_EQ(readFile(site / path).size(), size);
}

TEST_F(CliProgress, NobodyWhoReadsLinesIsGivenAnythingElse) {
    struct Case {
        const char* environment;
        CliPlace::Arguments more;
        bool onTerminal;
    };
    for (const auto& [environment, more, onTerminal] :
         std::vector<Case>{{"TERM=dumb", {}, true}, {"TERM=xterm", {"--json"}, true}, {"TERM=xterm", {}, false}}) {
        const auto result = review(environment, more, onTerminal);
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_TRUE(contains(result.output, path));
        for (const auto& text : {result.output, result.errors}) {
            EXPECT_FALSE(contains(text, " of 1.5 MB"));
            EXPECT_FALSE(contains(text, "\x1b")) << environment;
        }
    }
}

} // namespace
} // namespace zembrastel::testing
