// The commands that change, copy and explain profiles, through the executable.
#include "cli_run.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

class ProfileCommands : public ::testing::Test {
protected:
    ProfileCommands() {
        writeTree(site, {{"index.html", "hello"}, {"images/a.svg", "<svg/>"}});
        profile.name = "x";
        profile.host = "h";
        profile.username = "web";
        profile.localFolder = site.string();
        profile.enabled = true;
        profile.initialDownloadSelection = DownloadSelection::everything();
        save({profile});
    }

    void save(const std::vector<Profile>& profiles) const {
        SavedState state{.profiles = profiles, .baselines = {}, .remoteDates = {}};
        state.baselines[profile.id] = {{"index.html", {.size = 5}}};
        StateStore(place.state()).save(state);
    }

    // Runs the command on a terminal where this is typed.
    [[nodiscard]] CliResult typed(const std::string& text, const CliPlace::Arguments& arguments) const {
        return place.runInShellWithSecretService(
            "printf '" + text + "\\n' | script -qec " + cli::shellQuoted(place.shellCommand(arguments)) + " /dev/null");
    }

    CliPlace place;
    std::filesystem::path site = place.path("site");
    Profile profile;
};

TEST_F(ProfileCommands, SetChangesWhatIsNamedAndNothingElse) {
    const auto result = place.run(
        {"profile", "set", "x", "--host", "h2", "--transport", "implicit", "--exclude", "*.psd", "--disabled",
         "--json"});
    ASSERT_EQ(result.status, 0) << result.errors;
    Profile expected = profile;
    expected.host = "h2";
    expected.transport = TransferProtocol::implicitTLS;
    expected.port = 990;
    expected.exclusions = Exclusions(std::string(Exclusions::defaultText) + "\n*.psd");
    expected.enabled = false;
    EXPECT_EQ(place.saved().profiles, std::vector{expected});
    EXPECT_EQ(decodeProfile(result.output), expected);
    EXPECT_EQ(place.saved().baselines.at(profile.id).size(), 1U); // no upload is forgotten

    ASSERT_EQ(place.run({"profile", "set", "x", "--port", "2121"}).status, 0);
    ASSERT_EQ(place.run({"profile", "set", "x", "--transport", "ftp", "--enabled"}).status, 0);
    EXPECT_EQ(place.saved().profiles.front().port, 2121); // an unusual one was meant
    EXPECT_TRUE(place.saved().profiles.front().enabled);
    EXPECT_TRUE(contains(place.run({"profile", "show", "x"}).output, "web@h2:2121\n"));
}

TEST_F(ProfileCommands, ChangedSelectionIsDownloadedBeforeItIsUploaded) {
    ASSERT_EQ(place.run({"profile", "set", "x", "--sync", "images"}).status, 0);
    EXPECT_TRUE(place.saved().profiles.front().needsDownload);
    EXPECT_FALSE(place.saved().baselines.at(profile.id).contains("index.html"));
    ASSERT_EQ(place.run({"profile", "set", "x", "--no-sync", "/"}).status, 0);
    EXPECT_FALSE(place.saved().profiles.front().enabled);
}

TEST_F(ProfileCommands, RefusedChangeLeavesTheSavedStateUntouched) {
    Profile other = profile;
    other.id = Uuid::random();
    other.name = "y";
    save({profile, other});
    const std::string before = readFile(place.stateFile());
    const std::vector<std::pair<CliPlace::Arguments, std::string>> refused{
        {{"set", "x", "--name", "y"}, "There is a profile \"y\" already."},
        {{"set", "x", "--name", ""}, "Enter a name"},
        {{"set", "x", "--host", "new", "--password-command", "echo hush"}, "Keychain: "},
        {{"duplicate", "x", "y"}, "There is a profile \"y\" already."},
        {{"duplicate", "x", "--with-password"}, "Keychain: "},
        {{"remove", "x", "--yes"}, "--keep-password"},
        {{"export", "z"}, "No profile has the name or id"},
        {{"import", "/nonexistent/file"}, "Cannot import"}};
    for (auto [arguments, words] : refused) {
        arguments.insert(arguments.begin(), "profile");
        const auto result = place.run(arguments);
        EXPECT_EQ(result.status, 1) << ::testing::PrintToString(arguments);
        EXPECT_TRUE(contains(result.errors, words));
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        EXPECT_EQ(readFile(place.stateFile()), before) << ::testing::PrintToString(arguments);
    }
    EXPECT_EQ(place.run({"profile", "remove", "x"}).status, 2); // there is no terminal to ask in
    EXPECT_EQ(place.run({"profile", "set", "x", "--ask-password"}).status, 2);
    EXPECT_EQ(readFile(place.stateFile()), before);
}

TEST_F(ProfileCommands, RemovalIsAskedForAndKeepsAllFiles) {
    const auto files = readTree(site);
    const auto kept = typed("n", {"profile", "remove", "x"});
    EXPECT_EQ(kept.status, 1);
    EXPECT_TRUE(contains(
        kept.output,
        "This removes the saved connection and its Keychain password. Your local and remote files are kept."));
    EXPECT_EQ(place.saved().profiles.size(), 1U);
    EXPECT_EQ(typed("yes", {"profile", "remove", "x"}).status, 0);
    EXPECT_EQ(place.saved(), (SavedState{.profiles = {}, .baselines = {}, .remoteDates = place.saved().remoteDates}));
    EXPECT_EQ(readTree(site), files);
    save({profile});
    EXPECT_EQ(place.run({"profile", "remove", "x", "--yes", "--keep-password"}).status, 0);
    EXPECT_TRUE(place.saved().profiles.empty());
}

TEST_F(ProfileCommands, ExportIsImportedElsewhereOnceAndWithoutStarting) {
    profile.remoteFolder = "/\u202Etxt"; // would be shown from right to left
    save({profile});
    const auto file = place.path("export.json");
    ASSERT_EQ(place.run({"profile", "export", "x", "--output", file.string()}).status, 0);
    EXPECT_EQ(readFile(file), place.run({"profile", "export"}).output);
    for (const auto& command : {CliPlace::Arguments{"profile", "export"}, {"profile", "list", "--json"}}) {
        const auto shown = place.run(command).output;
        EXPECT_TRUE(contains(shown, R"("remoteFolder":"/\u202Etxt")")) << shown;
    }

    const CliPlace other;
    const auto dry = other.run({"profile", "import", file.string(), "--dry-run", "--json"});
    EXPECT_EQ(dry.status, 0) << dry.errors;
    EXPECT_TRUE(contains(dry.output, R"({"event":"importable","profile":"x")"));
    EXPECT_FALSE(std::filesystem::exists(other.stateFile()));
    ASSERT_EQ(other.run({"profile", "import", "-"}, "< '" + file.string() + "'").status, 0);
    Profile expected = profile;
    expected.enabled = false;
    EXPECT_EQ(other.saved().profiles, std::vector{expected});
    const auto again = other.run({"profile", "import", file.string()});
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(contains(again.output, "Skipped \"x\": There is a profile of this name already."));
}

TEST_F(ProfileCommands, ImportTakesWhatItCanAndTellsTheRest) {
    const auto file = place.path("sites.xml");
    writeFile(
        file, R"(<FileZilla3><Servers>
        <Server><Host>a</Host><Protocol>4</Protocol><User>u</User><Name>no folder</Name></Server>
        <Server><Host>b</Host><Protocol>1</Protocol><User>u</User><Name>shell</Name></Server>
        <Server><Host>c</Host><Protocol>4</Protocol><User>u</User><Name>good</Name><LocalDir>)"
                  + site.string() + R"(</LocalDir></Server>
        <Server><Host>d</Host><Protocol>4</Protocol><User>u</User><Pass encoding="base64">aHVzaA==</Pass>
        <Name>secret</Name><LocalDir>)"
                  + site.string() + "</LocalDir></Server></Servers></FileZilla3>");
    const auto import = [&](CliPlace::Arguments more) {
        more.insert(more.begin(), {"profile", "import", file.string()});
        return place.run(more);
    };
    const auto result = import({});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(contains(result.output, "Imported \"good\": u@c:21, FTPS (TLS), /, from " + site.string()));
    EXPECT_TRUE(contains(result.output, "Skipped \"no folder\": It has no local folder. --only NAME"));
    EXPECT_TRUE(contains(result.output, "Skipped \"shell\": It uses SFTP;"));
    EXPECT_TRUE(contains(result.output, "Skipped \"secret\": Keychain: ")); // none is there
    EXPECT_EQ(place.saved().profiles.size(), 2U);
    EXPECT_EQ(import({"--local-folder", site.string()}).status, 2);
    EXPECT_EQ(import({"--only", "shell"}).status, 1);
    EXPECT_EQ(import({"--only", "no folder", "--local-folder", site.string(), "--remote-folder", "/www"}).status, 0);
    EXPECT_EQ(place.saved().profiles.back().remoteFolder, "/www");
    EXPECT_EQ(import({"--only", "secret", "--no-passwords"}).status, 0);
    EXPECT_EQ(place.saved().profiles.size(), 4U);
    EXPECT_FALSE(contains(result.output + result.errors + readFile(place.stateFile()), "hush"));
}

TEST_F(ProfileCommands, WhyNamesWhatDecides) {
    profile.exclusions = Exclusions("*.psd\nbuild/out");
    profile.syncSelection = DownloadSelection{{{"", true}, {"images", false}, {"images/keep", true}}};
    save({profile});
    std::filesystem::create_symlink("index.html", site / "link");
    struct Case {
        std::string path;
        bool synced;
        std::string reason;
        std::string decider;
    };
    const std::vector<Case> cases{
        {"index.html", true, "selection", "/"},
        {(site / "index.html").string(), true, "selection", "/"},
        {"./a//b.psd/c", false, "exclusion", "*.psd"},
        {"build/out/x", false, "exclusion", "build/out"},
        {"a/.#b", false, "reserved", ".#"},
        {"images/a.svg", false, "selection", "images"},
        {"images/keep/a.svg", true, "selection", "images/keep"},
        {"link", false, "link", "link"}};
    for (const auto& [path, synced, reason, decider] : cases) {
        const auto result = place.run({"why", "x", path, "--json"});
        EXPECT_EQ(result.status, 0) << result.errors;
        const std::string words = std::string(R"("synced":)") + (synced ? "true" : "false") + R"(,"reason":")" + reason
                                  + R"(","decider":")" + decider + "\"";
        EXPECT_TRUE(contains(result.output, words)) << path;
    }
    EXPECT_EQ(
        place.run({"why", "x", "a/b.psd"}).output,
        "\"a/b.psd\" is not synced. The exclusion rule \"*.psd\" leaves out \"a/b.psd\".\n");
    EXPECT_EQ(place.run({"why", "x", "/etc/passwd"}).status, 2);
    EXPECT_EQ(place.run({"why", "x", "../y"}).status, 2);
}

} // namespace
} // namespace zembrastel::testing
