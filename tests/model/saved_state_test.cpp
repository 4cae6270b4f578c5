#include "model/saved_state.h"

#include "model/error.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace zembrastel {
namespace {

const std::string idText = "0E984725-C51C-4BF4-9960-E1C80E27ABA0";
const Uuid id = *Uuid::parse(idText);

// A saved profile of an older release: no selections.
std::string profileJson(const std::string& more = "") {
    return R"({"id":")" + idText
           + R"(","name":"Site","host":"h","port":21,"transport":"FTP","username":"u","remoteFolder":"/r",)"
             R"("localFolder":"/l","exclusions":"x\ny","enabled":true,"needsDownload":true)"
           + more + "}";
}

std::string stateJson(const std::string& profiles, const std::string& baselines = "{}", const std::string& more = "") {
    return R"({"profiles":[)" + profiles + R"(],"baselines":)" + baselines + more + "}";
}

std::string fingerprintJson(const std::string& size, const std::string& modified, const std::string& inode) {
    return R"({")" + idText + R"(":{"a/b":{"size":)" + size + R"(,"modified":)" + modified + R"(,"inode":)" + inode
           + "}}}";
}

Fingerprint readFingerprint(const std::string& size, const std::string& modified, const std::string& inode) {
    return decodeSavedState(stateJson("", fingerprintJson(size, modified, inode))).baselines.at(id).at("a/b");
}

std::string complaint(const std::string& json) {
    try {
        (void)decodeSavedState(json);
        return "";
    } catch (const SyncError& error) {
        return error.what();
    }
}

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    const auto at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return text.replace(at, part.size(), by);
}

bool sameBits(double a, double b) { return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b); }

TEST(SavedState, NothingTheUserSetIsLostBetweenRuns) {
    Profile profile;
    profile.name = "Größe \"quoted\"\\ \x01 \U0001F600";
    profile.host = "h";
    profile.port = 990;
    profile.transport = TransferProtocol::implicitTLS;
    profile.username = std::string("a\0b", 3);
    profile.remoteFolder = "/r";
    profile.localFolder = "/l\x7F";
    profile.exclusions = Exclusions("*.a\n\n b ");
    profile.enabled = profile.needsDownload = true;
    profile.initialDownloadSelection = DownloadSelection{.rules = {{"", true}, {"docs", false}, {"docs/a", true}}};
    profile.syncSelection = DownloadSelection{};
    SavedState state;
    state.profiles = {profile, Profile{}};
    state.baselines[profile.id];
    state.baselines[id] = {{"a", {.size = 1, .modified = 2.5, .inode = 3}}, {"", {}}};
    state.remoteDates.emplace()[id] = {{"a", RemoteDate(RemoteDate::duration(-0.1))}};
    EXPECT_EQ(decodeSavedState(encode(state)), state);
    EXPECT_EQ(decodeProfile(encode(profile)), profile);
    EXPECT_EQ(decodeSavedState(encode(SavedState{})), SavedState{});
}

TEST(SavedState, AbsentChoicesAreNotWrittenSoThatNoDefaultIsInvented) {
    SavedState state;
    state.profiles = {decodeProfile(profileJson())};
    EXPECT_EQ(encode(state), stateJson(profileJson()));
    EXPECT_TRUE(state.profiles.front().requiresDownloadSelection());
}

TEST(SavedState, FileTimesSurviveToTheLastBitOrEveryFileIsUploadedAgain) {
    std::mt19937_64 random(20240301);
    SavedState state;
    auto& files = state.baselines[id];
    auto& dates = state.remoteDates.emplace()[id];
    const auto add = [&](double modified, double date) {
        const auto path = std::to_string(files.size());
        files[path].modified = modified;
        dates[path] = RemoteDate(RemoteDate::duration(date));
    };
    using Limits = std::numeric_limits<double>;
    for (const double number :
         {0.0, -0.0, 1.0, 1e22, 1e23, 9007199254740993.0, 0.9868011474609375, Limits::min(), Limits::denorm_min(),
          Limits::max(), Limits::lowest(), Limits::epsilon()}) {
        add(number, number);
    }
    const auto fileTime = [&random] {
        const auto seconds = static_cast<double>(random() % 4'000'000'000U) - 1e9;
        return seconds + static_cast<double>(random() % 1'000'000'000U) * 1e-9;
    };
    for (int count = 0; count < 100'000; ++count) add(fileTime(), fileTime());
    const auto restored = decodeSavedState(encode(state));
    ASSERT_EQ(restored.baselines.at(id).size(), files.size());
    for (const auto& [path, fingerprint] : files) {
        ASSERT_TRUE(sameBits(restored.baselines.at(id).at(path).modified, fingerprint.modified)) << path;
        ASSERT_TRUE(sameBits(
            restored.remoteDates->at(id).at(path).time_since_epoch().count(),
            dates.at(path).time_since_epoch().count()));
    }
}

TEST(SavedState, SizesAndInodesAreExactOverTheirWholeRange) {
    const auto roundTrip = [](Fingerprint fingerprint) {
        SavedState state;
        state.baselines[id]["a"] = fingerprint;
        EXPECT_EQ(decodeSavedState(encode(state)), state);
    };
    for (const auto size : {INT64_MIN, INT64_MIN + 1, std::int64_t{-1}, std::int64_t{1} << 53, INT64_MAX}) {
        roundTrip({.size = size, .modified = 0, .inode = 0});
    }
    for (const auto inode : {(std::uint64_t{1} << 53) + 1, std::uint64_t{1} << 63, UINT64_MAX}) {
        roundTrip({.size = 0, .modified = 0, .inode = inode});
    }
    EXPECT_EQ(decodeProfile(replaced(profileJson(), ":21", ":-9223372036854775808")).port, INT64_MIN);
}

TEST(SavedState, FilesOfOtherReleasesAreRead) {
    const auto plain = decodeSavedState(stateJson(profileJson()));
    // Keys in another order, keys of the future, null for absent, a byte order mark, blanks.
    EXPECT_EQ(
        decodeSavedState(
            "\xEF\xBB\xBF {\"baselines\" : {} , \"future\":{\"profiles\":[[{}],1e5,{\"a\":[null]}]},\n\"profiles\":["
            + profileJson(R"(,"syncSelection":null,"rules":[{"a":true}],"x":1e300,"initialDownloadSelection":null)")
            + R"(],"remoteDates":null})"),
        plain);
    EXPECT_EQ(readFingerprint("1", "1700000000", "2"), (Fingerprint{.size = 1, .modified = 1.7e9, .inode = 2}));
    EXPECT_EQ(readFingerprint("1", "17E+8", "2"), (Fingerprint{.size = 1, .modified = 1.7e9, .inode = 2}));
    const auto lower = decodeSavedState(stateJson(
        replaced(profileJson(), "0E984725-C51C", "0e984725-c51c"), R"({"0e984725-c51c-4bf4-9960-e1c80e27aba0":{}})",
        R"(,"remoteDates":{"0e984725-C51C-4bf4-9960-e1c80e27aba0":{"b":1,"a":-2.5}})"));
    EXPECT_EQ(lower.profiles, plain.profiles);
    EXPECT_TRUE(lower.baselines.contains(id));
    EXPECT_EQ(lower.remoteDates->at(id).at("a"), RemoteDate(RemoteDate::duration(-2.5)));
    EXPECT_NE(encode(lower).find(idText), std::string::npos);
}

TEST(SavedState, OfARepeatedKeyTheLastCountsAlone) {
    const auto selection = R"(,"syncSelection":{"rules":{"a":true}},"syncSelection":{"rules":{"b":true,"b":false}})";
    const auto state = decodeSavedState(stateJson(
        profileJson() + "," + profileJson(), fingerprintJson("1", "1", "1"),
        R"(,"profiles":[)" + profileJson(selection) + R"(],"baselines":{})"));
    ASSERT_EQ(state.profiles.size(), 1U);
    EXPECT_EQ(state.profiles.front().syncSelection, (DownloadSelection{.rules = {{"b", false}}}));
    EXPECT_TRUE(state.baselines.empty());
}

TEST(SavedState, ADamagedFileSaysWhatIsWrongAndWhere) {
    const auto profile = profileJson();
    const auto broken = [&](const std::string& part, const std::string& by) {
        return complaint(stateJson(profile + "," + replaced(profile, part, by)));
    };
    EXPECT_EQ(broken(R"("host":"h",)", ""), R"(profile 2 has no "host")");
    EXPECT_EQ(broken(R"("id":)", R"("uid":)"), R"(profile 2 has no "id")");
    EXPECT_EQ(broken("21", "21.0"), R"("port" of profile 2 is not a whole number)");
    EXPECT_EQ(broken("21", "\"21\""), R"("port" of profile 2 is not a whole number)");
    EXPECT_EQ(broken("21", "9223372036854775808"), R"("port" of profile 2 is out of range)");
    EXPECT_EQ(broken("\"u\"", "null"), R"("username" of profile 2 is not a text)");
    EXPECT_EQ(broken("\"FTP\"", "\"SFTP\""), R"("transport" of profile 2 is not a known protocol)");
    EXPECT_EQ(broken(idText, "x"), R"("id" of profile 2 is not a UUID)");
    EXPECT_EQ(broken("true", "1"), R"("enabled" of profile 2 is not true or false)");
    EXPECT_EQ(broken("\"u\"", R"("\udc00")"), R"("username" of profile 2 is not valid Unicode)");
    EXPECT_EQ(broken("true}", R"(true,"syncSelection":{}})"), R"("syncSelection" of profile 2 has no "rules")");
    EXPECT_EQ(
        broken("true}", R"(true,"syncSelection":{"rules":{"a":null}}})"),
        R"("a" of "rules" of "syncSelection" of profile 2 is not true or false)");
    EXPECT_EQ(complaint(stateJson(profile + ",[]")), "profile 2 is not an object");

    EXPECT_EQ(complaint("{}"), R"(the saved state has no "profiles")");
    EXPECT_EQ(complaint(R"({"profiles":[]})"), R"(the saved state has no "baselines")");
    EXPECT_EQ(complaint("[]"), "the saved state is not an object");
    EXPECT_EQ(complaint(R"({"profiles":{}})"), R"("profiles" is not a list)");
    EXPECT_EQ(complaint(stateJson("", "null")), R"("baselines" is not an object)");
    EXPECT_EQ(complaint(stateJson("", R"({"x":{}})")), R"("x" of "baselines" is not a UUID)");
    EXPECT_EQ(
        complaint(stateJson("", R"({")" + idText + R"(":{"\ud800\udc00":1}})")),
        "\"\U00010000\" of \"" + idText + "\" of \"baselines\" is not an object");
    EXPECT_EQ(
        complaint(stateJson("", R"({")" + idText + R"(":{"\udc00":{}}})")),
        R"("\xED\xB0\x80" of ")" + idText + R"(" of "baselines" is not valid Unicode)");
    const auto file = R"("a/b" of ")" + idText + R"(" of "baselines")";
    EXPECT_EQ(
        complaint(stateJson("", fingerprintJson("1.5", "1", "1"))), R"("size" of )" + file + " is not a whole number");
    EXPECT_EQ(
        complaint(stateJson("", fingerprintJson("1", "true", "1"))), R"("modified" of )" + file + " is not a number");
    EXPECT_EQ(
        complaint(stateJson("", fingerprintJson("1", "1", "-1"))),
        R"("inode" of )" + file + " is not a whole number from 0 up");
    EXPECT_EQ(
        complaint(stateJson("", fingerprintJson("1", "1", "18446744073709551616"))),
        R"("inode" of )" + file + " is out of range");
    EXPECT_EQ(
        complaint(replaced(stateJson("", fingerprintJson("1", "1", "1")), R"(,"inode":1)", "")),
        file + R"( has no "inode")");
    try {
        (void)decodeProfile("{}");
        FAIL();
    } catch (const SyncError& error) {
        EXPECT_STREQ(error.what(), R"(the profile has no "id")");
    }
}

TEST(SavedState, HostileTextIsRefusedWithoutHarm) {
    const auto good = stateJson("");
    EXPECT_EQ(complaint(good), "");
    EXPECT_EQ(complaint(""), "byte 0 is not valid JSON: The document is empty");
    EXPECT_EQ(
        complaint(good + "{}"), "byte 30 is not valid JSON: The document root must not be followed by other values");
    EXPECT_EQ(complaint(good + std::string(1, '\0') + "{}"), "byte 30 is not valid JSON: A NUL character");
    EXPECT_EQ(complaint("{\"\xFF\":1}"), "the saved state is not valid UTF-8");
    for (std::size_t size = 0; size < good.size(); ++size) EXPECT_NE(complaint(good.substr(0, size)), "") << size;
    constexpr std::size_t depth = 1'000'000;
    EXPECT_EQ(complaint(replaced(good, "{", R"({"x":)" + std::string(depth, '[') + std::string(depth, ']') + ",")), "");
    EXPECT_NE(complaint(std::string(depth, '[')), "");
    // A long fraction sends the parser's own conversion beyond its tables.
    const auto tiny = "0." + std::string(400, '0') + "1";
    EXPECT_EQ(complaint(replaced(good, "{", R"({"x":)" + tiny + ",")), "");
    EXPECT_NE(complaint(stateJson("", fingerprintJson("1", "1e400", "1"))), "");
    EXPECT_NE(complaint(stateJson("", fingerprintJson("1", "1.8e308", "1"))), "");
}

TEST(SavedState, WhatJsonCannotHoldIsNeverWritten) {
    SavedState state;
    state.baselines[id]["caf\xE9"] = {};
    EXPECT_THROW((void)encode(state), SyncError);
    for (const double number : {NAN, INFINITY, -INFINITY}) {
        state.baselines[id] = {{"a", {.size = 0, .modified = number, .inode = 0}}};
        EXPECT_THROW((void)encode(state), SyncError);
        state.baselines.clear();
        state.remoteDates.emplace()[id]["a"] = RemoteDate(RemoteDate::duration(number));
        EXPECT_THROW((void)encode(state), SyncError);
        state.remoteDates.reset();
    }
    Profile profile;
    profile.exclusions = Exclusions("\xC0\xAF");
    EXPECT_THROW((void)encode(profile), SyncError);
}

} // namespace
} // namespace zembrastel
