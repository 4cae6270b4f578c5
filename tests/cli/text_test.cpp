// Texts, JSON lines and the choice of a profile, as pure functions.
#include "cli/command.h"
#include "cli/session/profile_choice.h"
#include "cli/session/profile_options.h"
#include "cli/terminal/json_line.h"
#include "cli/text/presentation.h"
#include "cli/text/status_text.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>

namespace zembrastel::testing {

using namespace cli;

namespace {

using namespace std::string_literals;

TEST(Presentation, NoTextCanControlTheTerminal) {
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
    EXPECT_EQ(filesText(1), "1 file");
    EXPECT_EQ(filesText(0), "0 files");
    EXPECT_EQ(bytesText(999), "999 bytes");
    EXPECT_EQ(bytesText(1234567), "1,234,567 bytes");
}

TEST(Presentation, EveryServerDateCanBeShown) {
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

TEST(RelativePath, EverySpellingNamesTheSameFolder) {
    for (const char* root : {"", ".", "/", "./", "//."}) EXPECT_EQ(relativePath(root), "");
    for (const char* images : {"a/images", "/a/images/", "./a//./images"}) EXPECT_EQ(relativePath(images), "a/images");
    EXPECT_EQ(relativePath("../.htaccess"), "../.htaccess"); // not silently another folder
}

using Lines = std::vector<std::string>;

// Tells a profile's events one after another, as the model would, and keeps what is to be shown.
class Story {
public:
    void status(Phase phase, const std::string& detail) {
        ProfileStatus status;
        status.enter(phase, detail);
        std::ranges::copy(narration.status(status, nullptr), std::back_inserter(lines));
    }

    void activity(const std::string& text, bool error = false) {
        const auto kind = error ? Activity::Kind::failure : Activity::Kind::note;
        std::ranges::copy(
            narration.activity({.date = {}, .text = text, .kind = kind}, nullptr), std::back_inserter(lines));
    }

    Lines lines;

private:
    Narration narration;
};

TEST(Narration, FailureIsPrintedOncePerAttempt) {
    Story story;
    for (const std::string seconds : {"5", "10"}) {
        story.activity("curl: (7) Failed to\nconnect", true);
        story.status(Phase::waitingToRetry, "curl: (7) Failed to\nconnect. Retrying in " + seconds + " seconds.");
    }
    for (int attempt = 0; attempt < 3; ++attempt) {
        story.status(Phase::checkFailed, "curl: (6) No host. Uploads remain paused.");
        story.activity("curl: (6) No host", true);
    }
    EXPECT_EQ(
        story.lines, (Lines{
                         "error: curl: (7) Failed to connect", "Waiting to retry: Retrying in 5 seconds.",
                         "error: curl: (7) Failed to connect", "Waiting to retry: Retrying in 10 seconds.",
                         "Server check needs attention: curl: (6) No host. Uploads remain paused.",
                         "error: curl: (6) No host", "error: curl: (6) No host"}));
}

std::vector<Profile> profilesNamed(const std::vector<std::string>& names) {
    std::vector<Profile> profiles(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) profiles[i].name = names[i];
    return profiles;
}

template <class Call>
std::string refusal(ExitCode code, Call call) {
    try {
        (void)call();
    } catch (const CommandError& error) {
        EXPECT_EQ(error.code, code) << error.what();
        return error.what();
    }
    ADD_FAILURE() << "accepted";
    return "";
}

TEST(ProfileChoice, UnknownNameFindsNoProfile) {
    auto profiles = profilesNamed({"one", "two", "three"});
    for (const auto& wanted : {"two"s, profiles[1].id.text(), asciiLowercase(profiles[1].id.text())}) {
        EXPECT_EQ(&chooseProfile(profiles, wanted), &profiles[1]) << wanted;
    }
    EXPECT_EQ(
        refusal(ExitCode::failed, [&] { return chooseProfile(profiles, "One"); }),
        R"(No profile has the name or id "One". There is "one", "two" and "three".)");
    EXPECT_EQ(
        refusal(ExitCode::failed, [&] { return chooseProfile({}, "x"); }),
        R"(No profile has the name or id "x". There are none yet; profile add makes one.)");
    profiles[2].name = profiles[0].id.text();
    EXPECT_EQ(&chooseProfile(profiles, profiles[0].id.text()), &profiles[0]);
    EXPECT_EQ(unambiguousName(profiles, profiles[2]), profiles[2].id.text()) << "its name is another one's id";
}

TEST(ProfileChoice, CommonNameNeverPicksAProfile) {
    const auto profiles = profilesNamed({"same", "other", "same"});
    EXPECT_EQ(
        refusal(ExitCode::failed, [&] { return chooseProfile(profiles, "same"); }),
        R"(Several profiles have the name "same". Give the id of one instead: )" + profiles[0].id.text() + ", "
            + profiles[2].id.text() + ".");
    EXPECT_EQ(unambiguousName(profiles, profiles[0]), profiles[0].id.text());
    EXPECT_EQ(unambiguousName(profiles, profiles[1]), "other");
}

TEST(ProfileOptions, PortFollowsTheTransportUnlessGiven) {
    EXPECT_EQ(profileFrom({.transport = "ftp"}).port, 21);
    EXPECT_EQ(profileFrom({.transport = "implicit"}).port, 990);
    EXPECT_EQ(profileFrom({.transport = "FTPS (implicit TLS)"}).transport, TransferProtocol::implicitTLS);
    EXPECT_EQ(profileFrom({.port = 0, .transport = "FTP"}).port, 0); // for validation to refuse, not to replace
    EXPECT_EQ(profileFrom({}).transport, TransferProtocol::ftps);
    EXPECT_EQ(profileFrom({.localFolder = "."}).localFolder, (std::filesystem::current_path() / ".").string());
}

TEST(ProfileOptions, SelectionsMeanWhatTheUserTyped) {
    using Rules = decltype(DownloadSelection::rules);
    EXPECT_FALSE(profileFrom({}).syncSelection);
    EXPECT_EQ(
        profileFrom({.sync = {"/web/"}, .noSync = {"web/drafts"}}).syncSelection->rules,
        (Rules{{"web", true}, {"web/drafts", false}}));
    // Leaving something out keeps the rest; leaving out the root leaves out everything.
    EXPECT_EQ(profileFrom({.noSync = {"drafts"}}).syncSelection->rules, (Rules{{"", true}, {"drafts", false}}));
    EXPECT_TRUE(profileFrom({.noSync = {"."}}).hasEmptySyncSelection());
    const auto everything = profileFrom({.download = {"/"}, .needsDownload = true}).initialDownloadSelection;
    EXPECT_EQ(everything, DownloadSelection::everything());
    // --exclude adds to the usual rules, --exclusions replaces them.
    EXPECT_EQ(profileFrom({.exclude = {"*.psd"}}).exclusions.text(), std::string(Exclusions::defaultText) + "\n*.psd");
    EXPECT_EQ(profileFrom({.exclude = {"c"}, .exclusions = "a\nb"}).exclusions.text(), "a\nb\nc");
    EXPECT_EQ(profileFrom({.exclude = {"c"}, .exclusions = ""}).exclusions.text(), "c");
    for (const ProfileOptions& wrong :
         {ProfileOptions{.transport = "sftp"},
          {.id = "123"},
          {.sync = {"a"}, .noSync = {"./a"}},
          {.sync = {"../a"}},
          {.needsDownload = true},
          {.noDownload = {""}, .needsDownload = true}}) {
        refusal(ExitCode::usage, [&] { return profileFrom(wrong); });
    }
}

} // namespace
} // namespace zembrastel::testing
