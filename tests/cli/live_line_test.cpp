// The line that is written over and over, and that it is there only for somebody who looks.
#include "cli/live_line.h"
#include "cli_run.h"
#include "platform/columns.h"
#include "support/ftp_server.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>

namespace zembrastel::testing {
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

// What a terminal shows of these bytes, line by line, of which it has any number.
class Terminal {
public:
    explicit Terminal(const std::string& bytes) {
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            if (bytes.compare(at, erase.size(), erase) == 0) {
                lines.back().resize(std::min(column, lines.back().size()));
                at += erase.size() - 1;
            } else if (bytes[at] == '\r') {
                if (!bytes.substr(at).starts_with("\r\n")) noteWidest();
                column = 0;
            } else if (bytes[at] == '\n') {
                lines.emplace_back();
                column = 0;
            } else {
                write(bytes[at]);
            }
        }
    }

    std::vector<std::string> lines{""};
    std::size_t widest = 0; // of the lines that were written over

private:
    static constexpr std::string_view erase = "\x1b[K";

    void write(char byte) {
        auto& line = lines.back();
        line.resize(std::max(line.size(), column + 1));
        line[column++] = byte;
    }

    void noteWidest() { widest = std::max(widest, columnsOf(lines.back())); }

    std::size_t column = 0;
};

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
    const Terminal terminal(result.output);
    EXPECT_LT(terminal.widest, 50U);
    EXPECT_GT(terminal.widest, 40U);
    ASSERT_EQ(terminal.lines.size(), 3U);
    EXPECT_EQ(terminal.lines[0], "Downloaded newer server copy: " + path + " (previous local copy backed up)");
    EXPECT_EQ(terminal.lines[1], "Decided. Watching can go on.");
    EXPECT_EQ(terminal.lines[2], "");
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
