#include "model/saved_state.h"

#include "support/local_site.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace zembrastel {
namespace {

const Uuid id = *Uuid::parse("0E984725-C51C-4BF4-9960-E1C80E27ABA0");

// As an older release saved it: no selections, no dates of the server. The second profile has `more` as well.
std::string savedJson(const std::string& more = "") {
    const std::string profile =
        R"({"id":"0E984725-C51C-4BF4-9960-E1C80E27ABA0","name":"Site","host":"h","port":21,"transport":"FTP",)"
        R"("username":"u","remoteFolder":"/r","localFolder":"/l","exclusions":"x\ny","enabled":true,)"
        R"("needsDownload":true)";
    return R"({"profiles":[)" + profile + "}," + profile + more
           + R"(}],"baselines":{"0E984725-C51C-4BF4-9960-E1C80E27ABA0":{"a/b":{"size":1,"modified":1.5,"inode":2}}}})";
}

// The last occurrence.
std::string replaced(std::string text, const std::string& part, const std::string& by) {
    const auto at = text.rfind(part);
    EXPECT_NE(at, std::string::npos) << part;
    return text.replace(at, part.size(), by);
}

// Which must be the same for those who read the profiles alone.
std::string complaint(const std::string& json) {
    const auto whole = testing::failureOf([&] { return decodeSavedState(json); });
    EXPECT_EQ(testing::failureOf([&] { return decodeProfiles(json); }), whole);
    return whole;
}

TEST(SavedState, NoSettingIsLostBetweenRuns) {
    Profile profile;
    profile.name = "Größe \"quoted\"\\ \x01 \U0001F600";
    profile.host = "h";
    profile.port = INT64_MIN;
    profile.transport = TransferProtocol::implicitTLS;
    profile.username = std::string("a\0b", 3);
    profile.remoteFolder = "/r";
    profile.localFolder = "/l\x7F";
    profile.exclusions = Exclusions("*.a\n\n b ");
    profile.enabled = profile.needsDownload = profile.compareContents.on = true;
    profile.trustedKey = TrustedKey{
        .key = {{0, 0x9F, 0xFF}},
        .host = "h",
        .port = 990,
        .since = std::chrono::sys_days(std::chrono::year(2026) / 1 / 2)};
    constexpr auto beyondDouble = (std::int64_t{1} << 53) + 1;
    SavedState state;
    state.profiles = {profile, Profile{}};
    state.baselines[profile.id];
    state.baselines[id] = {
        {"", {}},
        {"a", {.size = INT64_MIN, .modified = 2.5, .inode = UINT64_MAX}},
        {"b", {.size = INT64_MAX, .modified = 0, .inode = beyondDouble}},
        {"c", {.size = beyondDouble, .modified = 0, .inode = std::uint64_t{1} << 63}}};
    state.remoteDates.emplace()[id] = {{"a", RemoteDate(RemoteDate::duration(-0.1))}};
    EXPECT_EQ(decodeSavedState(encode(state)), state);
    EXPECT_EQ(decodeProfile(encode(profile)), profile);
    EXPECT_EQ(decodeSavedState(encode(SavedState{})), SavedState{});
}

TEST(SavedState, FileTimesSurviveToTheLastBit) {
    using Limits = std::numeric_limits<double>;
    std::vector<double> numbers{
        -0.0,
        1e22,
        1e23,
        9007199254740993.0,
        0.9868011474609375,
        Limits::min(),
        Limits::denorm_min(),
        Limits::max(),
        Limits::lowest(),
        Limits::epsilon()};
    std::mt19937_64 random(20240301);
    for (int count = 0; count < 20'000; ++count) {
        const auto seconds = static_cast<double>(random() % 4'000'000'000U) - 1e9;
        numbers.push_back(seconds + static_cast<double>(random() % 1'000'000'000U) * 1e-9);
    }
    SavedState state;
    auto& dates = state.remoteDates.emplace()[id];
    for (const double number : numbers) {
        const auto path = std::to_string(dates.size());
        state.baselines[id].set(path, {.modified = number});
        dates.set(path, RemoteDate(RemoteDate::duration(number)));
    }
    const auto restored = decodeSavedState(encode(state));
    EXPECT_EQ(restored, state);
    EXPECT_TRUE(std::signbit(restored.baselines.at(id).at("0").modified)) << "equality does not see the sign of zero";
    EXPECT_TRUE(std::signbit(restored.remoteDates->at(id).at("0").time_since_epoch().count()));
}

TEST(SavedState, FilesOfOtherReleasesAreRead) {
    auto expected = decodeSavedState(savedJson());
    EXPECT_EQ(encode(expected), savedJson()) << "what is absent is not written, so that no default is invented";
    // Keys of the future, null for absent, a byte order mark, blanks; ids and numbers written in another way.
    const auto later =
        savedJson(R"(,"syncSelection":null,"rules":[{"a":true}],"x":1e300,"initialDownloadSelection":null)");
    const auto future = R"( ] ,"future":{"profiles":[[{}],1e5,{"a":[null]}]}, "remoteDates":null,"baselines" :)";
    EXPECT_EQ(decodeSavedState("\xEF\xBB\xBF\n" + replaced(later, R"(],"baselines":)", future)), expected);
    auto other = replaced(savedJson(), R"("id":"0E984725-C51C)", R"("id":"0e984725-c51c)");
    other = replaced(replaced(other, R"({"0E984725-C51C)", R"({"0e984725-c51c)"), "1.5", "15E-1");
    const auto dates = R"(,"remoteDates":{"0e984725-C51C-4bf4-9960-e1c80e27aba0":{"b":1,"a":-2.5}}})";
    expected.remoteDates.emplace()[id] = {
        {"a", RemoteDate(RemoteDate::duration(-2.5))}, {"b", RemoteDate(RemoteDate::duration(1))}};
    EXPECT_EQ(decodeSavedState(replaced(other, "}", dates)), expected);
}

TEST(SavedState, LastOfRepeatedKeysCounts) {
    const std::string choice = R"(,"initialDownloadSelection":{"rules":)";
    const auto twice = savedJson(choice + R"({"a":true}})" + choice + R"({"b":true,"b":false}})");
    const DownloadSelection last{.rules = {{"b", false}}};
    EXPECT_EQ(decodeSavedState(twice).profiles.back().initialDownloadSelection, last);
    EXPECT_EQ(decodeSavedState(replaced(savedJson(), "}", R"(,"profiles":[],"baselines":{}})")), SavedState{});
}

TEST(SavedState, DamagedFileIsReportedWithItsPlace) {
    const std::string files = R"("0E984725-C51C-4BF4-9960-E1C80E27ABA0" of "baselines")";
    const std::string file = R"("a/b" of )" + files;
    for (const auto& [part, by, message] : std::vector<std::array<std::string, 3>>{
             {R"("host":"h",)", "", R"(profile 2 has no "host")"},
             {"21", "21.0", R"("port" of profile 2 is not a whole number)"},
             {"21", "\"21\"", R"("port" of profile 2 is not a whole number)"},
             {"\"u\"", "null", R"("username" of profile 2 is not a text)"},
             {"\"u\"", R"("\udc00")", R"("username" of profile 2 is not valid Unicode)"},
             {"x\\n", R"(\udc00)", R"("exclusions" of profile 2 is not valid Unicode)"},
             {"\"FTP\"", "\"SFTP\"", R"("transport" of profile 2 is not a known protocol)"},
             {R"("id":"0)", R"("id":"x)", R"("id" of profile 2 is not a UUID)"},
             {"true", "1", R"("needsDownload" of profile 2 is not true or false)"},
             {"true}", R"(true,"syncSelection":{}})", R"("syncSelection" of profile 2 has no "rules")"},
             {"true}", R"(true,"syncSelection":{"rules":{"a":null}}})",
              R"("a" of "rules" of "syncSelection" of profile 2 is not true or false)"},
             {"true}", "true},[]", "profile 3 is not an object"},
             {R"("profiles")", R"("x")", R"(the saved state has no "profiles")"},
             {R"("profiles":)", R"("profiles":{},"x":)", R"("profiles" is not a list)"},
             {R"("baselines")", R"("x")", R"(the saved state has no "baselines")"},
             {R"("baselines":)", R"("baselines":null,"x":)", R"("baselines" is not an object)"},
             {R"({"a/b")", R"({},"x":{"a/b")", R"("x" of "baselines" is not a UUID)"},
             {R"("a/b")", R"("\ud800\udc00":1,"a/b")", "\"\U00010000\" of " + files + " is not an object"},
             {R"("a/b")", R"("\udc00")", "a key of " + files + " is not valid Unicode"},
             {R"("size":1)", R"("size":1.5)", R"("size" of )" + file + " is not a whole number"},
             {"1.5", "true", R"("modified" of )" + file + " is not a number"},
             {"1.5", "1.8e308", R"("modified" of )" + file + " is out of range"},
             {R"("inode":2)", R"("inode":-1)", R"("inode" of )" + file + " is not a whole number from 0 up"},
             {R"("inode":2)", R"("inode":18446744073709551616)", R"("inode" of )" + file + " is out of range"},
             {R"(,"inode":2)", "", file + R"( has no "inode")"}}) {
        EXPECT_EQ(complaint(replaced(savedJson(), part, by)), message);
    }
    EXPECT_EQ(complaint("[]"), "the saved state is not an object");
    EXPECT_EQ(testing::failureOf([] { return decodeProfile("{}"); }), R"(the profile has no "id")");
}

TEST(SavedState, HostileTextIsRefusedWithoutHarm) {
    const auto good = savedJson();
    const auto trailing = "byte " + std::to_string(good.size())
                          + " of the saved state is not valid JSON: Unexpected trailing content in the JSON input";
    EXPECT_EQ(complaint(""), "the saved state is not valid JSON: Empty: no JSON found");
    EXPECT_EQ(complaint(good + "{}"), trailing);
    EXPECT_EQ(complaint(good + std::string(1, '\0') + "{}"), trailing);
    EXPECT_EQ(complaint("{\"\xFF\":1}"), "the saved state is not valid UTF-8");
    EXPECT_NE(complaint(replaced(good, "1.5", "1e400")), "");
    for (std::size_t size = 0; size < good.size(); ++size) EXPECT_NE(complaint(good.substr(0, size)), "") << size;
    constexpr std::size_t depth = 1'000'000;
    EXPECT_NE(complaint(std::string(depth, '[')), "");
    const auto nested = std::string(depth, '[') + std::string(depth, ']');
    // A long fraction sends the parser's own conversion beyond its tables.
    for (const auto& unknown : {nested, "0." + std::string(400, '0') + "1"}) {
        EXPECT_EQ(complaint(replaced(good, "}", R"(,"x":)" + unknown + "}")), "");
    }
}

TEST(SavedState, LongNumbersKeepTheirValue) {
    for (const auto& [token, value] : std::vector<std::pair<std::string, double>>{
             {"0.43748024600589513616", 0.43748024600589513616},
             {"-0.00043748024600589513616", -0.00043748024600589513616},
             {"1700000000.12345678901234567890", 1700000000.12345678901234567890},
             {"0." + std::string(400, '0') + "1e401", 1},
             {"12345678901234567890123  ", 12345678901234567890123.0}}) {
        const auto files = decodeSavedState(replaced(savedJson(), "1.5", token)).baselines.at(id);
        EXPECT_EQ(files.at("a/b").modified, value) << token;
    }
    for (const auto* token :
         {"01700000000.1234567890", "1700000000.1234567890.", "-.43748024600589513616", "1700000000000000000000x",
          "\"1700000000.12345678901\""}) {
        EXPECT_TRUE(complaint(replaced(savedJson(), "1.5", token)).ends_with(" is not a number")) << token;
    }
}

TEST(SavedState, MalformedJsonIsRefusedUnderUnknownKeysToo) {
    for (const auto* unknown :
         {"[1,]", "{\"a\" 1}", "{1:2}", "[}", "[1 2]", "tru", "nulll", "01", "1.", "-", "+1", "[.5]", "\"\\q\"",
          "{\"a\":[\"\\u12\"]}", "[1,,2]", "{,}", "'a'", "[NaN]"}) {
        EXPECT_NE(complaint(replaced(savedJson(), "}", std::string(R"(,"x":)") + unknown + "}")), "") << unknown;
    }
}

TEST(SavedState, ValuesThatJsonCannotHoldAreNotWritten) {
    SavedState badName;
    badName.baselines[id].set("caf\xE9", {});
    Profile badRules;
    badRules.exclusions = Exclusions("\xC0\xAF");
    EXPECT_THROW((void)encode(badName), SyncError);
    EXPECT_THROW((void)encode(badRules), SyncError);
    for (const double number : {NAN, INFINITY, -INFINITY}) {
        SavedState badTime;
        badTime.baselines[id].set("a", {.modified = number});
        SavedState badDate;
        badDate.remoteDates.emplace()[id].set("a", RemoteDate(RemoteDate::duration(number)));
        for (const auto& state : {badTime, badDate}) EXPECT_THROW((void)encode(state), SyncError);
    }
}

} // namespace
} // namespace zembrastel
