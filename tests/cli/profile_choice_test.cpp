#include "cli/profile_choice.h"

#include "cli/exit_code.h"
#include "cli/profile_options.h"
#include "cli/scan_command.h"
#include "platform/text.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

Profile named(const std::string& name) {
    Profile profile;
    profile.name = name;
    return profile;
}

std::string refusal(const std::vector<Profile>& profiles, const std::string& wanted) {
    try {
        return "chose " + chooseProfile(profiles, wanted).name;
    } catch (const CommandError& error) {
        EXPECT_EQ(error.code, ExitCode::failed);
        return error.what();
    }
}

TEST(ProfileChoice, NameOrIdInEitherCaseFindsTheProfile) {
    const std::vector profiles{named("one"), named("two")};
    const std::string lower = asciiLowercase(profiles[1].id.text());
    EXPECT_EQ(chooseProfile(profiles, "two").id, profiles[1].id);
    EXPECT_EQ(chooseProfile(profiles, lower).id, profiles[1].id);
    EXPECT_EQ(chooseProfile(profiles, profiles[0].id.text()).id, profiles[0].id);
}

TEST(ProfileChoice, WrongNameSaysWhatThereIs) {
    const std::vector profiles{named("one"), named("two"), named("three")};
    EXPECT_EQ(refusal(profiles, "One"), R"(No profile has the name or id "One". There is "one", "two" and "three".)");
    EXPECT_NE(refusal({}, "x").find("profile add"), std::string::npos);
}

TEST(ProfileChoice, CommonNameNeverPicksOneByChance) {
    const std::vector profiles{named("same"), named("other"), named("same")};
    const std::string message = refusal(profiles, "same");
    EXPECT_NE(message.find(profiles[0].id.text()), std::string::npos);
    EXPECT_NE(message.find(profiles[2].id.text()), std::string::npos);
    EXPECT_EQ(message.find(profiles[1].id.text()), std::string::npos);
    EXPECT_EQ(unambiguousName(profiles, profiles[0]), profiles[0].id.text());
    EXPECT_EQ(unambiguousName(profiles, profiles[1]), "other");
}

TEST(ProfileChoice, NameThatIsAnotherProfilesIdIsNotOfferedForTyping) {
    const Profile first = named("first");
    const std::vector profiles{first, named(first.id.text())};
    EXPECT_EQ(chooseProfile(profiles, first.id.text()).name, "first");
    EXPECT_EQ(unambiguousName(profiles, profiles[1]), profiles[1].id.text());
}

TEST(ProfileOptions, PortFollowsTheTransportUnlessGiven) {
    EXPECT_EQ(profileFrom({.transport = "ftp"}).port, 21);
    EXPECT_EQ(profileFrom({.transport = "implicit"}).port, 990);
    EXPECT_EQ(profileFrom({.transport = "FTPS (implicit TLS)"}).transport, TransferProtocol::implicitTLS);
    EXPECT_EQ(profileFrom({.port = 0, .transport = "FTP"}).port, 0); // for validation to refuse, not to replace
    EXPECT_EQ(profileFrom({}).transport, TransferProtocol::ftps);
}

TEST(ProfileOptions, SelectionsSayWhatTheUserMeant) {
    using Rules = decltype(DownloadSelection::rules);
    EXPECT_FALSE(profileFrom({}).syncSelection.has_value());
    EXPECT_EQ(
        profileFrom({.sync = {"/web/"}, .noSync = {"web/drafts"}}).syncSelection->rules,
        (Rules{{"web", true}, {"web/drafts", false}}));
    // Leaving something out keeps the rest; leaving out the root leaves out everything.
    EXPECT_EQ(profileFrom({.noSync = {"drafts"}}).syncSelection->rules, (Rules{{"", true}, {"drafts", false}}));
    EXPECT_TRUE(profileFrom({.noSync = {"."}}).hasEmptySyncSelection());
    EXPECT_EQ(
        profileFrom({.download = {"/"}, .needsDownload = true}).initialDownloadSelection,
        DownloadSelection::everything());
}

TEST(ProfileOptions, ExcludeAddsToTheUsualRulesAndExclusionsReplacesThem) {
    EXPECT_EQ(profileFrom({.exclude = {"*.psd"}}).exclusions.text(), std::string(Exclusions::defaultText) + "\n*.psd");
    EXPECT_EQ(profileFrom({.exclusions = "a\nb"}).exclusions.text(), "a\nb");
    EXPECT_EQ(profileFrom({.exclude = {"c"}, .exclusions = ""}).exclusions.text(), "c");
}

TEST(ProfileOptions, CombinationsWithoutMeaningAreUsageErrors) {
    for (const ProfileOptions& wrong :
         {ProfileOptions{.transport = "sftp"},
          {.id = "123"},
          {.sync = {"a"}, .noSync = {"./a"}},
          {.sync = {"../a"}},
          {.needsDownload = true},
          {.noDownload = {""}, .needsDownload = true}}) {
        try {
            (void)profileFrom(wrong);
            ADD_FAILURE() << "accepted";
        } catch (const CommandError& error) {
            EXPECT_EQ(error.code, ExitCode::usage) << error.what();
        }
    }
}

TEST(Scan, DifferencesNameEachFileOnce) {
    const FileMap baseline{{"changed", {.size = 1}}, {"deleted", {.size = 1}}, {"same", {.size = 1}}};
    const FileMap current{{"changed", {.size = 2}}, {"new", {.size = 1}}, {"same", {.size = 1}}};
    const auto found = differences(current, baseline);
    EXPECT_EQ(found.added, std::vector<std::string>{"new"});
    EXPECT_EQ(found.changed, std::vector<std::string>{"changed"});
    EXPECT_EQ(found.deleted, std::vector<std::string>{"deleted"});
}

} // namespace
} // namespace zembrastel::testing
