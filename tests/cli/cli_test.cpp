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

    [[nodiscard]] CliPlace::Arguments addition(const std::string& name, CliPlace::Arguments more = {}) const {
        CliPlace::Arguments all{"profile",    "add", "--name",         name,  "--host", "127.0.0.1",
                                "--username", "web", "--local-folder", site()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    CliPlace place;
};

TEST_F(Cli, WrongCommandLinesEndWithTheUsageCodeAndOneLine) {
    const std::string add = "profile add --name x --host h --username u --local-folder " + site();
    for (const auto& line : std::vector<std::string>{
             "",
             "nosuch",
             "--nosuch",
             "profile",
             "profile add",
             "ls",
             "ls a b c",
             "profile list --state ''",
             "profile set x",
             "profile set x --enabled --disabled",
             "profile set x --host",
             "profile remove",
             "profile import",
             "why x",
             "pause",
             "push",
             "review x --list --keep-all",
             "review x --download",
             "review x --download a --download-all",
             "test x --password-file a --password-command b",
             add + " --from y",
             add + " --transport sftp",
             add + " --transport ''",
             add + " --needs-download"}) {
        const auto result = place.run(words(line));
        EXPECT_EQ(result.status, 2) << line;
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.errors.starts_with("zembrastel-cli: ")) << result.errors;
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    }
    struct Case {
        CliPlace::Arguments arguments;
        int status;
        const char* told;
    };
    for (const auto& [arguments, status, told] : std::vector<Case>{
             {addition("x", {"--username", "b"}), 2, "--username was given more than once"},
             {addition("x", {"--port", "0"}), 2, "--port: must be a number from 1 to 65535, not 0"},
             {addition("x", {"--remote-folder", ""}), 2, "--remote-folder: must not be empty; / is the top"},
             {addition("x", {"--sync", "/elsewhere/a"}), 2, "such as images/logo.svg, and not \"/elsewhere/a\""},
             {{"profile", "add", "--name", "x", "--host", "h", "--username", "u", "--local-folder", "/"},
              1,
              "keys and"},
             {{"profile", "add", "--name", "x", "--host", "h", "--username", "u", "--local-folder",
               place.home().string()},
              1,
              "is or holds your home folder"}}) {
        const auto result = place.run(arguments);
        EXPECT_EQ(result.status, status) << told;
        EXPECT_TRUE(contains(result.errors, told));
    }
    const auto json = place.run({"nosuch", "--json"});
    EXPECT_TRUE(json.errors.starts_with(R"({"event":"error","message":")")) << json.errors;
    EXPECT_FALSE(std::filesystem::exists(place.stateFile()));
}

TEST_F(Cli, EveryFieldOfAProfileArrivesInTheSavedState) {
    auto command = words(
        R"(profile add --name '[My] "site"' --host ftp.example.com --port 2121 --transport implicit)"
        R"( --username 'web master' --remote-folder 'htdocs/a b' --exclude [ab] --exclude *.psd --exclusions .git)"
        R"( --sync '' --no-sync [drafts] --download images --no-download images/old --enabled --needs-download)"
        R"( --id 0f0e0d0c-0b0a-0908-0706-050403020100 --local-folder)");
    command.push_back(site());
    const auto result = place.run(command);
    ASSERT_EQ(result.status, 0) << result.errors;

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

    const auto listed = place.run({"profile", "list", "--json"});
    EXPECT_EQ(decodeProfile(listed.output), expected);
}

TEST_F(Cli, ProfileThatWasListedCanBeAddedElsewhere) {
    ASSERT_EQ(place.run(addition("x", {"--exclusions", "", "--no-sync", "a"})).status, 0);
    const auto listed = place.run({"profile", "list", "--json"});
    writeFile(place.path("profile.json"), listed.output);
    for (const std::string& source : {std::string("-"), place.path("profile.json").string()}) {
        const CliPlace other;
        const auto result = other.run(
            {"profile", "add", "--from", source, "--json"}, "< '" + place.path("profile.json").string() + "'");
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.output, listed.output);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(other.saved().profiles, place.saved().profiles);
    }
}

TEST_F(Cli, FolderTypedRelativeIsFoundFromEverywhere) {
    const auto result =
        place.run({"profile", "add", "--name", "x", "--host", "h", "--username", "u", "--local-folder", "."}, "");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(place.saved().profiles.front().localFolder, std::filesystem::current_path().string());
}

TEST_F(Cli, RefusedProfileLeavesTheSavedStateUntouched) {
    ASSERT_EQ(place.run(addition("x")).status, 0);
    const std::string before = readFile(place.stateFile());
    writeFile(place.path("broken.json"), R"({"id":"x"})");
    struct Refused {
        CliPlace::Arguments arguments;
        std::string words;
    };
    const std::vector<Refused> refused{
        {addition(" x "), "already"},
        {addition("y", {"--id", place.saved().profiles.front().id.text()}), "is that of \"x\""},
        {addition("y", {"--remote-folder", ".."}), "Enter a remote folder"},
        {addition(""), "Enter a name, server, username and local folder."},
        {{"profile", "add", "--name", "y", "--host", "h", "--username", "u", "--local-folder", "/nonexistent"},
         "Choose an existing local folder."},
        {{"profile", "add", "--from", place.path("broken.json").string()}, "broken.json"},
        {{"profile", "add", "--from", "/nonexistent/profile"}, "/nonexistent/profile"},
        {addition("y", {"--password-file", "/nonexistent/password"}), "/nonexistent/password"},
        // There is no secret store to put it in.
        {addition("y", {"--password-command", "echo hush"}), "Keychain"}};
    for (const auto& [arguments, words] : refused) {
        const auto result = place.run(arguments);
        EXPECT_EQ(result.status, 1) << words;
        EXPECT_TRUE(contains(result.errors, words));
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        EXPECT_FALSE(contains(result.errors, "hush"));
        EXPECT_EQ(readFile(place.stateFile()), before);
    }
}

TEST_F(Cli, UnreadableStateEndsEveryCommandAndIsNotTouched) {
    const std::string broken = R"({"profiles":[{"id":7}]})";
    writeFile(place.stateFile(), broken);
    for (const CliPlace::Arguments& arguments :
         {CliPlace::Arguments{"profile", "list"},
          addition("x"),
          {"test", "x"},
          {"ls", "x"},
          {"scan", "x"},
          {"watch"},
          {"watch", "x"},
          {"why", "x", "a"},
          {"check", "x"},
          {"profile", "set", "x", "--enabled"},
          {"profile", "remove", "x", "--yes"},
          {"profile", "duplicate", "x"},
          {"review", "x"}}) {
        const auto result = place.run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(result.errors.starts_with("zembrastel-cli: Could not load saved profiles: ")) << result.errors;
        EXPECT_TRUE(contains(result.errors, ". Your saved file has been left untouched."));
        EXPECT_EQ(readFile(place.stateFile()), broken);
    }
}

TEST_F(Cli, MisspeltStateFolderIsNamedAndNotMade) {
    std::filesystem::remove(place.state());
    for (const CliPlace::Arguments& arguments :
         {CliPlace::Arguments{"profile", "list"}, {"profile", "export"}, {"status"}, {"watch"}, {"scan", "x"}}) {
        const auto result = place.run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(contains(result.errors, "There is no such state folder: " + place.state().string() + ". Check"));
        EXPECT_FALSE(std::filesystem::exists(place.state()));
    }
}

TEST_F(Cli, StateFolderInUseIsNotChangedByASecondProgram) {
    ASSERT_EQ(place.run(addition("x")).status, 0);
    const std::string before = readFile(place.stateFile());
    const auto held = InstanceLock::acquire(place.state());
    ASSERT_TRUE(held);
    for (const CliPlace::Arguments& arguments :
         {addition("y"),
          {"watch", "x"},
          {"review", "x"},
          {"profile", "set", "x", "--enabled"},
          {"profile", "remove", "x", "--yes"},
          {"profile", "duplicate", "x"}}) {
        const auto result = place.run(arguments);
        EXPECT_EQ(result.status, 4);
        EXPECT_TRUE(contains(result.errors, place.state().string()));
        EXPECT_TRUE(isOneLine(result.errors));
    }
    EXPECT_EQ(readFile(place.stateFile()), before);
    EXPECT_EQ(place.run({"profile", "list"}).status, 0);
    EXPECT_EQ(place.run({"scan", "x"}).status, 0);
}

TEST_F(Cli, ScanTellsWhatWouldBeUploadedWithoutAPassword) {
    ASSERT_EQ(place.run(addition("x")).status, 0);
    SavedState state = place.saved();
    state.baselines[state.profiles.front().id] = {
        {"gone.html", {.size = 1}}, {"index.html", Fingerprint::read(place.path("site") / "index.html")}};
    StateStore(place.state()).save(state);
    const auto result = place.run({"scan", "x", "--password-command", "/nonexistent/command"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(
        result.output, "x: 2 files, 11 bytes, in " + site()
                           + "\n  new      images/a.svg\n  deleted  gone.html\nTo upload: 1 file.\nWhat is deleted "
                             "here stays on the server.\n");
}

TEST_F(Cli, NothingToWatchIsSaidAtOnce) {
    EXPECT_EQ(place.run({"watch"}).status, 1);
    ASSERT_EQ(place.run(addition("first")).status, 0);
    ASSERT_EQ(place.run(addition("second", {"--enabled"})).status, 0);
    ASSERT_EQ(place.run(addition("third", {"--no-sync", "/"})).status, 0);
    const auto unselected = place.run({"watch", "third"});
    EXPECT_EQ(unselected.status, 1);
    EXPECT_TRUE(contains(unselected.output, "No files or folders are selected."));
    // No secret service is there: the one enabled profile cannot start.
    const auto enabled = place.run({"watch"});
    EXPECT_EQ(enabled.status, 1);
    EXPECT_TRUE(contains(enabled.output, "second  Needs attention: Keychain: "));
    EXPECT_TRUE(contains(enabled.errors, "Watching ended: \"second\" cannot go on."));
}

TEST_F(Cli, PasswordCommandThatFailsIsNoEmptyPassword) {
    ASSERT_EQ(place.run(addition("x")).status, 0);
    struct Failing {
        std::string command;
        int status;
        std::string words;
    };
    writeFile(place.path("empty"), "");
    const std::vector<Failing> failing{
        {"sh -c 'echo hush; exit 3'", 1, "\"sh\" failed with exit code 3"},
        {"sh -c 'kill -9 $$'", 1, "\"sh\" failed with signal 9"},
        {"true", 1, "printed nothing"},
        {"nosuchprogram", 1, "no program \"nosuchprogram\" in PATH"},
        {"/nonexistent/program", 1, "/nonexistent/program"},
        {"echo 'unfinished", 2, "quotation"},
        {" ", 2, "no program"}};
    for (const auto& [command, status, words] : failing) {
        const auto result = place.run({"test", "x", "--password-command", command});
        EXPECT_EQ(result.status, status) << command;
        EXPECT_TRUE(contains(result.errors, words));
        EXPECT_FALSE(contains(result.errors, "hush"));
    }
    EXPECT_TRUE(contains(place.run({"test", "x", "--password-file", place.path("empty").string()}).errors, "is empty"));
}

TEST_F(Cli, InterruptEndsAPasswordCommandThatNeverWould) {
    ASSERT_EQ(place.run(addition("x")).status, 0);
    const auto started = place.path("started").string();
    const std::string command =
        "sh -c 'echo $$ > " + started + ".new; mv " + started + ".new " + started + "; exec sleep 1000'";
    struct Case {
        std::string name;
        int signal;
        int status;
    };
    for (const auto& [name, signal, status] : {Case{"test", SIGINT, 8}, {"review", SIGTERM, 8}, {"watch", SIGHUP, 0}}) {
        Program program = place.start({name, "x", "--password-command", command});
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(started); }));
        const pid_t child = std::stoi(readFile(started));
        ::kill(program.pid(), signal);
        EXPECT_EQ(program.wait(), status) << name;
        EXPECT_NE(::kill(child, 0), 0) << name;
        std::filesystem::remove(started);
    }
}

TEST_F(Cli, ColoursAreForTerminalsAloneAndNotForWhoWantsNone) {
    const auto onTerminal = [this](const std::vector<std::string>& variables) {
        // script runs the command on a terminal of its own.
        return runProgram({"/usr/bin/script", "-qec", place.shellCommand({"status"}), "/dev/null"}, variables).output;
    };
    EXPECT_TRUE(contains(onTerminal({"TERM=xterm"}), "\x1b[31mzembrastel-cli:\x1b[0m Zembrastel is not"));
    EXPECT_TRUE(onTerminal({"TERM=xterm", "NO_COLOR=1"}).starts_with("zembrastel-cli: Zembrastel is not"));
    EXPECT_TRUE(onTerminal({"TERM=dumb"}).starts_with("zembrastel-cli: Zembrastel is not"));
    EXPECT_TRUE(place.run({"status"}).errors.starts_with("zembrastel-cli: Zembrastel is not"));
}

TEST_F(Cli, ClosedStandardStreamsNeverLandInAFile) {
    ASSERT_EQ(place.run(addition("x"), "<&- >&-").status, 0);
    ASSERT_EQ(place.run(addition("y"), "<&- >&- 2>&-").status, 0);
    EXPECT_EQ(place.saved().profiles.size(), 2U);
    EXPECT_EQ(place.run({"profile", "list"}, "<&- >&- 2>&-").status, 0);
    EXPECT_EQ(readFile(place.state() / "lock"), "");
}

TEST_F(Cli, LostOutputIsNotSuccess) {
    ASSERT_EQ(place.run(addition("x")).status, 0);
    const auto full = place.run({"profile", "list"}, "> /dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(contains(full.errors, "Cannot write the output"));
}

} // namespace
} // namespace zembrastel::testing
