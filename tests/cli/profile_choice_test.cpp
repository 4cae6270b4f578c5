#include "cli/session/profile_choice.h"

#include "cli/command.h"
#include "cli/session/profile_options.h"
#include "platform/text.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {

using namespace cli;

namespace {

using namespace std::string_literals;

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

TEST(ProfileChoice, NameOrIdInEitherCaseFindsOneProfileOrNone) {
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

TEST(ProfileChoice, CommonNameNeverPicksOneByChance) {
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
}

TEST(ProfileOptions, SelectionsAndExclusionsSayWhatTheUserMeant) {
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
