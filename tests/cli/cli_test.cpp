// The executable without a server.
#include "cli_run.h"

#include "platform/instance_lock.h"
#include "support/wait_for.h"

#include <csignal>
#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

class Cli : public ::testing::Test {
protected:
    Cli() { writeTree(place.path("site"), {{"index.html", "hello"}, {"images/a.svg", "<svg/>"}}); }

    [[nodiscard]] std::string site() const { return place.path("site").string(); }

    // "profile add" with all it needs; a later option replaces none.
    [[nodiscard]] std::string add(const std::string& name, const std::string& more = "") const {
        return "profile add --host 127.0.0.1 --username web --local-folder " + site() + " --name " + name + " " + more;
    }

    CliPlace place;
};

TEST_F(Cli, WrongCommandLineIsRefusedInOneLine) {
    const std::string bare = "profile add --name x --host h --username u --local-folder ";
    struct Case {
        std::string line;
        std::string printed = "";
    };
    for (const auto& [line, printed] : std::vector<Case>{
             {"", "Name a command: profile, test"},
             {"nosuch", "There is no command \"nosuch\""},
             {"--nosuch"},
             {"profile", "Name a command of profile: add, list"},
             {"profile add", "A profile needs --name, --host, --username, --local-folder as well"},
             {"ls"},
             {"ls a b c"},
             {"profile list --state ''"},
             {"profile set x", "Name something to change."},
             {"profile set x --enabled --disabled"},
             {"profile set x --host"},
             {"profile remove"},
             {"profile import"},
             {"why x"},
             {"pause"},
             {"push"},
             {"review x --list --keep-all"},
             {"review x --download"},
             {"review x --download a --download-all"},
             {"test x --password-file a --password-command b"},
             {add("x", "--from y")},
             {add("x", "--transport sftp")},
             {add("x", "--transport ''")},
             {add("x", "--needs-download")},
             {add("x", "--username b"), "--username was given more than once"},
             {add("x", "--port 0"), "--port: must be a number from 1 to 65535, not 0"},
             {add("x", "--remote-folder ''"), "--remote-folder: must not be empty; / is the top"},
             {add("x", "--sync /elsewhere/a"), "such as images/logo.svg, and not \"/elsewhere/a\""}}) {
        EXPECT_TRUE(place.expect(2, line, {"zembrastel-cli: ", printed}).output.empty());
    }
    place.expect(1, bare + "/", {"keys and"});
    place.expect(1, bare + place.home().string(), {"is or holds your home folder"});
    place.expect(2, "nosuch --json", {R"({"event":"error","message":")"});
    EXPECT_FALSE(std::filesystem::exists(place.stateFile()));
}

TEST_F(Cli, NoFieldOfAProfileIsLost) {
    place.expect(
        0, R"(profile add --name '[My] "site"' --host ftp.example.com --port 2121 --transport implicit)"
           R"( --username 'web master' --remote-folder 'htdocs/a b' --exclude [ab] --exclude *.psd --exclusions .git)"
           R"( --sync '' --no-sync [drafts] --download images --no-download images/old --enabled --needs-download)"
           R"( --id 0f0e0d0c-0b0a-0908-0706-050403020100 --local-folder )"
               + site());
    Profile expected;
    expected.id = *Uuid::parse("0F0E0D0C-0B0A-0908-0706-050403020100");
    expected.name = "[My] \"site\"";
    expected.host = "ftp.example.com";
    expected.port = 2121;
    expected.transport = TransferProtocol::implicitTLS;
    expected.username = "web master";
    expected.remoteFolder = "htdocs/a b";
    expected.localFolder = site();
    expected.exclusions = Exclusions(".git\n[ab]\n*.psd");
    expected.enabled = true;
    expected.needsDownload = true;
    expected.initialDownloadSelection = DownloadSelection{{{"images", true}, {"images/old", false}}};
    expected.syncSelection = DownloadSelection{{{"", true}, {"[drafts]", false}}};
    EXPECT_EQ(place.saved().profiles, std::vector{expected});
    const auto listed = place.run("profile list --json").output;
    EXPECT_EQ(decodeProfile(listed), expected);

    const auto file = place.path("profile.json").string();
    writeFile(file, listed);
    for (const auto& source : {std::string("-"), file}) {
        const CliPlace other;
        EXPECT_EQ(other.run("profile add --json --from " + source, "< " + file).output, listed);
        EXPECT_EQ(other.saved().profiles, std::vector{expected});
    }
}

TEST_F(Cli, RefusedProfileLeavesTheSavedStateUntouched) {
    place.expect(0, add("x"));
    const std::string before = readFile(place.stateFile());
    const auto broken = place.path("broken.json").string();
    writeFile(broken, R"({"id":"x"})");
    for (const auto& [line, printed] : std::vector<std::pair<std::string, std::string>>{
             {add("' x '"), "already"},
             {add("y", "--id " + place.profile().id.text()), "is that of \"x\""},
             {add("y", "--remote-folder .."), "Enter a remote folder"},
             {add("''"), "Enter a name, server, username and local folder."},
             {"profile add --name y --host h --username u --local-folder /nonexistent",
              "Choose an existing local folder."},
             {"profile add --from " + broken, "broken.json"},
             {"profile add --from /nonexistent/profile", "/nonexistent/profile"},
             {add("y", "--password-file /nonexistent/password"), "/nonexistent/password"}}) {
        place.expect(1, line, {printed});
        EXPECT_EQ(readFile(place.stateFile()), before);
    }
}

TEST_F(Cli, UnreadableStateEndsEveryCommandAndIsNotTouched) {
    const std::string broken = R"({"profiles":[{"id":7}]})";
    writeFile(place.stateFile(), broken);
    for (const auto& line :
         {std::string("profile list"), add("x"), std::string("test x"), std::string("ls x"), std::string("scan x"),
          std::string("watch"), std::string("why x a"), std::string("check x"), std::string("profile set x --enabled"),
          std::string("profile remove x --yes"), std::string("profile duplicate x"), std::string("review x")}) {
        place.expect(1, line, {"Could not load saved profiles: ", ". Your saved file has been left untouched."});
        EXPECT_EQ(readFile(place.stateFile()), broken);
    }
}

TEST_F(Cli, MisspeltStateFolderIsNotMade) {
    std::filesystem::remove(place.state());
    for (const auto* line : {"profile list", "profile export", "status", "watch", "scan x"}) {
        place.expect(1, line, {"There is no such state folder: " + place.state().string() + ". Check"});
        EXPECT_FALSE(std::filesystem::exists(place.state()));
    }
}

TEST_F(Cli, SecondProgramDoesNotChangeAStateInUse) {
    place.expect(0, add("x"));
    const std::string before = readFile(place.stateFile());
    const auto held = InstanceLock::acquire(place.state());
    ASSERT_TRUE(held);
    for (const auto& line :
         {add("y"), std::string("watch x"), std::string("review x"), std::string("profile set x --enabled"),
          std::string("profile remove x --yes"), std::string("profile duplicate x"), std::string("push x")}) {
        place.expect(4, line, {place.state().string()});
    }
    EXPECT_EQ(readFile(place.stateFile()), before);
    place.expect(0, "profile list");
    place.expect(0, "scan x");
}

TEST_F(Cli, ScanNeedsNoPassword) {
    place.expect(0, add("x"));
    SavedState state = place.saved();
    state.baselines[state.profiles.front().id] = {
        {"gone.html", {.size = 1}}, {"index.html", Fingerprint::read(place.path("site") / "index.html")}};
    StateStore(place.state()).save(state);
    place.expect(
        0, "scan x --password-command /nonexistent/command",
        {"x: 2 files, 11 bytes, in " + site()
         + "\n  new      images/a.svg\n  deleted  gone.html\nTo upload: 1 file.\n"});
}

TEST_F(Cli, WatchOfNothingEndsAtOnce) {
    place.expect(9, "watch", {"There is no profile to watch yet"});
    place.expect(0, add("first"));
    place.expect(9, "watch", {"No profile is enabled."});
    place.expect(0, add("second", "--enabled"));
    place.expect(0, add("third", "--no-sync /"));
    // There is no secret service, so the enabled profile cannot start.
    for (const auto& [line, printed] : std::vector<std::pair<std::string, std::string>>{
             {"watch third", "No files or folders are selected."}, {"watch", "second  Needs attention: Keychain: "}}) {
        const auto result = place.run(line);
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(contains(result.output, printed));
        EXPECT_TRUE(contains(result.errors, "Watching ended: "));
    }
}

TEST_F(Cli, FailedPasswordCommandIsNoEmptyPassword) {
    place.expect(0, add("x"));
    writeFile(place.path("empty"), "");
    struct Case {
        std::string command;
        int status;
        std::string printed;
    };
    for (const auto& [command, status, printed] : std::vector<Case>{
             {R"("sh -c 'echo hush; exit 3'")", 1, "\"sh\" failed with exit code 3"},
             {R"("sh -c 'kill -9 \$\$'")", 1, "\"sh\" failed with signal 9"},
             {"true", 1, "printed nothing"},
             {"nosuchprogram", 1, "no program \"nosuchprogram\" in PATH"},
             {"/nonexistent/program", 1, "/nonexistent/program"},
             {"\"echo 'unfinished\"", 2, "quotation"},
             {"' '", 2, "no program"}}) {
        const auto result = place.expect(status, "test x --password-command " + command, {printed});
        EXPECT_FALSE(contains(result.errors, "hush"));
    }
    place.expect(1, "test x --password-file " + place.path("empty").string(), {"is empty"});
}

TEST_F(Cli, InterruptEndsAPasswordCommandThatHangs) {
    place.expect(0, add("x"));
    const auto started = place.path("started").string();
    const std::string command =
        "\"sh -c 'echo \\$\\$ > " + started + ".new; mv " + started + ".new " + started + "; exec sleep 1000'\"";
    struct Case {
        std::string name;
        int signal;
        int status;
    };
    for (const auto& [name, signal, status] : {Case{"test", SIGINT, 8}, {"review", SIGTERM, 8}, {"watch", SIGHUP, 0}}) {
        Program program = place.start(name + " x --password-command " + command);
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(started); }));
        const pid_t child = std::stoi(readFile(started));
        ::kill(program.pid(), signal);
        EXPECT_EQ(program.wait(), status) << name;
        EXPECT_NE(::kill(child, 0), 0) << name;
        std::filesystem::remove(started);
    }
}

TEST_F(Cli, ColoursAppearOnlyWhereWanted) {
    const auto onTerminal = [this](const Texts& variables) {
        // script runs the command on a terminal of its own.
        return runProgram({"/usr/bin/script", "-qec", place.shellCommand("status"), "/dev/null"}, variables).output;
    };
    EXPECT_TRUE(contains(onTerminal({"TERM=xterm"}), "\x1b[31mzembrastel-cli:\x1b[0m Zembrastel is not running"));
    for (const auto& plain :
         {onTerminal({"TERM=xterm", "NO_COLOR=1"}), onTerminal({"TERM=dumb"}), place.expect(6, "status").errors}) {
        EXPECT_TRUE(plain.starts_with("zembrastel-cli: Zembrastel is not running for ")) << plain;
    }
}

TEST_F(Cli, ClosedStandardStreamsNeverLandInAFile) {
    ASSERT_EQ(place.run(add("x"), "<&- >&-").status, 0);
    ASSERT_EQ(place.run(add("y"), "<&- >&- 2>&-").status, 0);
    EXPECT_EQ(place.saved().profiles.size(), 2U);
    EXPECT_EQ(place.run("profile list", "<&- >&- 2>&-").status, 0);
    EXPECT_EQ(readFile(place.state() / "lock"), "");
}

TEST_F(Cli, LostOutputIsNotSuccess) {
    place.expect(0, add("x"));
    const auto full = place.run("profile list", "> /dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(contains(full.errors, "Cannot write the output"));
}

} // namespace
} // namespace zembrastel::testing
