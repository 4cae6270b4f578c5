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
    [[nodiscard]] CliResult answer(const std::string& text, const std::string& command) const {
        return place.runInShellWithSecretService(
            "printf '" + text + "\\n' | script -qec " + cli::shellQuoted(place.shellCommand(command)) + " /dev/null");
    }

    CliPlace place;
    std::filesystem::path site = place.path("site");
    Profile profile;
};

TEST_F(ProfileCommands, SetChangesOnlyTheNamedSettings) {
    const auto result =
        place.expect(0, "profile set x --host h2 --transport implicit --exclude *.psd --disabled --json");
    Profile expected = profile;
    expected.host = "h2";
    expected.transport = TransferProtocol::implicitTLS;
    expected.port = 990;
    expected.exclusions = Exclusions(std::string(Exclusions::defaultText) + "\n*.psd");
    expected.enabled = false;
    EXPECT_EQ(place.saved().profiles, std::vector{expected});
    EXPECT_EQ(decodeProfile(result.output), expected);
    EXPECT_EQ(place.saved().baselines.at(profile.id).size(), 1U); // no upload is forgotten

    place.expect(0, "profile set x --port 2121");
    place.expect(0, "profile set x --transport ftp --enabled");
    place.expect(0, "profile show x", {"web@h2:2121\n", "Enabled           yes\n"}); // an unusual port was meant
}

TEST_F(ProfileCommands, RefusedChangeLeavesTheSavedState) {
    Profile other = profile;
    other.id = Uuid::random();
    other.name = "y";
    save({profile, other});
    const std::string before = readFile(place.stateFile());
    struct Case {
        std::string line;
        int status;
        std::string printed;
    };
    for (const auto& [line, status, printed] : std::vector<Case>{
             {"set x --name y", 1, "There is a profile \"y\" already."},
             {"set x --name ''", 1, "Enter a name"},
             {"set x --password-command 'echo hush'", 1, "Cannot store the password of \"x\": Keychain: "},
             {"set x --ask-password", 2, "needs a terminal"},
             {"duplicate x y", 1, "There is a profile \"y\" already."},
             {"duplicate x --with-password", 1, "Keychain: "},
             {"remove x --yes", 1, "--keep-password"},
             {"remove x", 2, "needs a terminal"},
             {"export z", 1, "No profile has the name or id"},
             {"import /nonexistent/file", 1, "Cannot import"}}) {
        place.expect(status, "profile " + line, {printed});
        EXPECT_EQ(readFile(place.stateFile()), before);
    }
}

TEST_F(ProfileCommands, MissingSecretServiceStopsNoCommand) {
    writeFile(place.passwordFile(), "hush\n");
    const std::string given = " --password-file " + place.passwordFile().string();
    const Texts printed{"No password was stored. Keychain: ", "Give the password to each command with --password-file"};
    const std::string added = "add --name new --host h --username u --local-folder " + site.string();
    for (const auto& command : {added, std::string("set x --host other"), std::string("duplicate x")}) {
        const auto result = place.expect(0, "profile " + command + given, printed);
        EXPECT_FALSE(contains(result.output + result.errors + readFile(place.stateFile()), "hush"));
    }
    EXPECT_EQ(place.profile().host, "other");
    EXPECT_EQ(place.saved().profiles.size(), 3U);
}

TEST_F(ProfileCommands, RemovalAsksAndKeepsAllFiles) {
    const auto files = readTree(site);
    const auto kept = answer("n", "profile remove x");
    EXPECT_EQ(kept.status, 1);
    EXPECT_TRUE(contains(
        kept.output,
        "This removes the saved connection and its Keychain password. Your local and remote files are kept."));
    EXPECT_EQ(place.saved().profiles.size(), 1U);
    EXPECT_EQ(answer("yes", "profile remove x").status, 0);
    EXPECT_EQ(place.saved(), (SavedState{.profiles = {}, .baselines = {}, .remoteDates = place.saved().remoteDates}));
    EXPECT_EQ(readTree(site), files);
    save({profile});
    place.expect(0, "profile remove x --yes --keep-password");
    EXPECT_TRUE(place.saved().profiles.empty());
}

TEST_F(ProfileCommands, ImportStartsNothingAndReplacesNothing) {
    profile.remoteFolder = "/\u202Etxt"; // would be shown from right to left
    save({profile});
    const auto file = place.path("export.json").string();
    place.expect(0, "profile export x --output " + file);
    EXPECT_EQ(readFile(file), place.expect(0, "profile export", {R"("remoteFolder":"/\u202Etxt")"}).output);
    place.expect(0, "profile list --json", {R"("remoteFolder":"/\u202Etxt")"});

    const CliPlace other;
    other.expect(0, "profile import --dry-run --json " + file, {R"({"event":"importable","profile":"x")"});
    EXPECT_FALSE(std::filesystem::exists(other.stateFile()));
    ASSERT_EQ(other.run("profile import -", "< " + file).status, 0);
    Profile expected = profile;
    expected.enabled = false;
    EXPECT_EQ(other.saved().profiles, std::vector{expected});
    other.expect(1, "profile import " + file, {"Skipped \"x\": There is a profile of this name already."});
}

TEST_F(ProfileCommands, ImportNamesWhatItSkips) {
    const auto file = place.path("sites.xml").string();
    const std::string folder = "<LocalDir>" + site.string() + "</LocalDir></Server>";
    writeFile(
        file, R"(<FileZilla3><Servers>
        <Server><Host>a</Host><Protocol>4</Protocol><User>u</User><Name>no folder</Name></Server>
        <Server><Host>b</Host><Protocol>1</Protocol><User>u</User><Name>shell</Name></Server>
        <Server><Host>c</Host><Protocol>4</Protocol><User>u</User><Name>good</Name>)"
                  + folder + R"(<Server><Host>d</Host><Protocol>4</Protocol><User>u</User>
        <Pass encoding="base64">aHVzaA==</Pass><Name>secret</Name>)"
                  + folder + "</Servers></FileZilla3>");
    const std::string import = "profile import " + file;
    const auto result = place.expect(
        0, import,
        {"Imported \"good\": u@c:21, FTPS (TLS), /, from " + site.string(),
         "Skipped \"no folder\": It has no local folder. --only NAME", "Skipped \"shell\": It uses SFTP;",
         "Imported \"secret\": u@d:21", "  Its password was not stored. Keychain: "}); // there is no secret service
    place.expect(2, import + " --local-folder " + site.string());
    place.expect(1, import + " --only shell");
    place.expect(0, import + " --only 'no folder' --remote-folder /www --local-folder " + site.string());
    EXPECT_EQ(place.saved().profiles.back().remoteFolder, "/www");
    EXPECT_EQ(place.saved().profiles.size(), 4U);
    EXPECT_FALSE(contains(result.output + result.errors + readFile(place.stateFile()), "hush"));
}

TEST_F(ProfileCommands, WhyNamesTheDecidingRule) {
    profile.exclusions = Exclusions("*.psd\nbuild/out");
    profile.syncSelection = DownloadSelection{{{"", true}, {"images", false}, {"images/keep", true}}};
    save({profile});
    std::filesystem::create_symlink("index.html", site / "link");
    for (const auto& [path, expected] : std::vector<std::pair<std::string, std::string>>{
             {"index.html", R"(true,"reason":"selection","decider":"/")"},
             {(site / "index.html").string(), R"(true,"reason":"selection","decider":"/")"},
             {"./a//b.psd/c", R"(false,"reason":"exclusion","decider":"*.psd")"},
             {"build/out/x", R"(false,"reason":"exclusion","decider":"build/out")"},
             {"a/.#b", R"(false,"reason":"reserved","decider":".#")"},
             {"images/a.svg", R"(false,"reason":"selection","decider":"images")"},
             {"images/keep/a.svg", R"(true,"reason":"selection","decider":"images/keep")"},
             {"link", R"(false,"reason":"link","decider":"link")"}}) {
        place.expect(0, "why x --json '" + path + "'", {R"("synced":)" + expected});
    }
    place.expect(
        0, "why x a/b.psd", {"\"a/b.psd\" is not synced. The exclusion rule \"*.psd\" leaves out \"a/b.psd\".\n"});
    place.expect(2, "why x /etc/passwd");
    place.expect(2, "why x ../y");
}

} // namespace
} // namespace zembrastel::testing
