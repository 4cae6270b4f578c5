// Lines for a slow reader, and the live line of a terminal.
#include "cli/terminal/live_line.h"
#include "cli/terminal/output.h"
#include "cli_run.h"
#include "platform/descriptor.h"
#include "support/ftp_server.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace zembrastel::testing {

using namespace cli;

namespace {

using Room = Output::NeverWaiting;

// Standard output is a pipe of 4 KiB while it lives.
class SmallPipe {
public:
    SmallPipe() : before(::dup(STDOUT_FILENO)) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) throw std::system_error(errno, std::system_category());
        reading = Descriptor(ends[0]);
        ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[1]);
    }
    SmallPipe(const SmallPipe&) = delete;
    SmallPipe& operator=(const SmallPipe&) = delete;
    ~SmallPipe() { restore(); }

    // Everything up to these words.
    std::string readUntil(const std::string& words) {
        std::array<char, 4096> piece{};
        while (text.find(words) == std::string::npos) {
            const auto size = ::read(reading.get(), piece.data(), piece.size());
            if (size <= 0) break;
            text.append(piece.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

    void restore() const { ::dup2(before.get(), STDOUT_FILENO); }

private:
    Descriptor before;
    Descriptor reading;
    std::string text;
};

TEST(Printer, DropsAndCountsLinesWithoutRoom) {
    const auto line = [](int number) { return std::to_string(number) + std::string(92, '.'); };
    for (const bool json : {false, true}) {
        SmallPipe pipe;
        Output output(json);
        {
            const Room publishing(output, std::size_t{10} << 10U);
            for (int number = 1000; number < 2000; ++number) output.line(line(number));
            const std::string note = json ? R"({"event":"unprinted","lines":)" : " lines were not printed\n";
            const std::string printed = pipe.readUntil(note);
            EXPECT_TRUE(printed.starts_with(line(1000) + "\n" + line(1001) + "\n"));
            EXPECT_FALSE(contains(printed, line(1999)));
            output.line("more");
            EXPECT_TRUE(contains(pipe.readUntil("more\n"), note));
        }
        pipe.restore();
    }
}

TEST(Printer, DropsNothingWithUnlimitedRoom) {
    SmallPipe pipe;
    Output output(false);
    std::jthread reader([&pipe] { EXPECT_TRUE(contains(pipe.readUntil("\n1999\n"), "\n1500\n")); });
    {
        const Room publishing(output, Room::unlimitedRoom, [] { return true; });
        for (int number = 1000; number < 2000; ++number) output.line(std::to_string(number));
    }
    pipe.restore();
}

TEST(Columns, NoCharacterIsTornByElision) {
    struct Case {
        std::string text;
        std::size_t columns;
        std::string elided; // to seven columns
    };
    for (const auto& [text, columns, elided] : std::vector<Case>{
             {"index.html", 10, "ind…tml"},
             {"seven", 5, "seven"},
             {"seven77", 7, "seven77"},
             {"grüße.html", 10, "grü…tml"},
             {"cafe\u0301/cafe\u0301", 9, "caf…afe\u0301"}, // the accent is a character of its own
             {"网站/图片.png", 13, "网…png"},               // half a character is none
             {"😀😀😀😀", 8, "😀…😀"},
             {"", 0, ""},
         }) {
        EXPECT_EQ(columnsOf(text), columns) << text;
        EXPECT_EQ(elidedInMiddle(text, 7), elided);
        EXPECT_LE(columnsOf(elidedInMiddle(text, 7)), 7U) << text;
    }
    EXPECT_EQ(elidedInMiddle("abc", 1), "…");
    EXPECT_EQ(elidedInMiddle("abc", 0), "");
}

TEST(LiveLine, ProgressFitsIntoEveryWidth) {
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
    [[nodiscard]] CliResult review(const std::string& environment, const std::string& more, bool onTerminal) {
        auto content = randomBytes(size);
        content.front() = static_cast<char>('0' + reviews); // a file of equal content is not offered
        server.put("site/" + path, content);
        touch(
            server.root() / "site" / path,
            std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) + std::chrono::hours(++reviews));
        const std::string command =
            environment + " "
            + place.shellCommand("review x --download-all --password-file " + place.passwordFile().string() + more);
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

TEST_F(CliProgress, ProgressIsErasedFromTheTerminal) {
    const auto result = review("TERM=xterm", "", true);
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

TEST_F(CliProgress, NoProgressOutsideACapableTerminal) {
    struct Case {
        const char* environment;
        const char* more;
        bool onTerminal;
    };
    for (const auto& [environment, more, onTerminal] :
         {Case{"TERM=dumb", "", true}, {"TERM=xterm", " --json", true}, {"TERM=xterm", "", false}}) {
        const auto result = review(environment, more, onTerminal);
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_TRUE(contains(result.output, path));
        EXPECT_FALSE(contains(result.output + result.errors, " of 1.5 MB"));
        EXPECT_FALSE(contains(result.output + result.errors, "\x1b")) << environment;
    }
}

} // namespace
} // namespace zembrastel::testing
