// Faults of the server, the connection or a colleague while files are published.
#include "transport/publish/publishing.h"

#include "platform/files.h"
#include "platform/text.h"
#include "support/local_site.h"
#include "support/wait_for.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <thread>

namespace zembrastel {
namespace {

using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;
using Words = std::vector<std::string>;
using Presence = RemoteFacts::Presence;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);

RemoteDate at(int second) { return toRemoteDate(moment + std::chrono::seconds(second)); }

RemoteFacts there(std::optional<std::uint64_t> size, std::optional<RemoteDate> modified) {
    return {.presence = Presence::present, .modified = modified, .size = size};
}

const RemoteFacts unknown{};
const RemoteFacts absent{.presence = Presence::absent};

TEST(PublishDecision, NoUnseenOrTornFileIsPublished) {
    struct Case {
        const char* what;
        RemoteFacts copy;
        LastSeen lastSeen;
        RemoteFacts live;
        Verdict expected;
    };
    const RemoteFacts whole = there(9, at(0));
    const LastSeen seen = ServerVersion{.modified = at(0), .size = 5};
    const LastSeen undated = ServerVersion{.modified = at(0)};
    for (const auto& [what, copy, lastSeen, live, expected] : std::vector<Case>{
             {"new file", whole, KnownAbsent{}, absent, Verdict::publish},
             {"the version last seen", whole, seen, there(5, at(0)), Verdict::publish},
             {"deleted on the server", whole, seen, absent, Verdict::publish},
             {"nothing known", whole, NothingKnown{}, there(7, at(9)), Verdict::publish},
             {"no answer about the live file", whole, seen, unknown, Verdict::publish},
             {"server gives no date", whole, seen, there(5, std::nullopt), Verdict::publish},
             {"size never seen", whole, undated, there(7, at(0)), Verdict::publish},
             {"present, but no facts", whole, KnownAbsent{}, there({}, {}), Verdict::publish},
             {"other size, same second", whole, seen, there(6, at(0)), Verdict::keepLive},
             {"same size, next second", whole, seen, there(5, at(1)), Verdict::keepLive},
             {"older than the one last seen", whole, seen, there(5, at(-5)), Verdict::keepLive},
             {"appeared meanwhile", whole, KnownAbsent{}, there(0, at(0)), Verdict::keepLive},
             {"changed, and the copy is torn", there(8, at(0)), seen, there(6, at(0)), Verdict::keepLive},
             {"torn copy", there(8, at(0)), seen, there(5, at(0)), Verdict::sendAgain},
             {"altered copy", there(10, at(0)), NothingKnown{}, absent, Verdict::sendAgain},
             {"copy gone", absent, KnownAbsent{}, absent, Verdict::sendAgain},
             {"no sizes", there({}, at(0)), KnownAbsent{}, absent, Verdict::publishUnconfirmed},
             {"no answer about the copy", unknown, seen, unknown, Verdict::publishUnconfirmed},
         }) {
        EXPECT_EQ(verdict(9, copy, lastSeen, live), expected) << what;
    }
}

TEST(PublishDecision, FailedRenameIsNoticed) {
    struct Case {
        const char* what;
        RemoteFacts before;
        RemoteFacts after;
        bool live;
    };
    for (const auto& [what, before, after, live] : std::vector<Case>{
             {"as sent", there(5, at(0)), there(9, at(10)), true},
             {"first version", absent, there(9, at(10)), true},
             {"date of the renaming", there(9, at(0)), there(9, at(12)), true},
             {"no dates", there(9, std::nullopt), there(9, std::nullopt), true},
             {"no answer", absent, unknown, true},
             {"old version still there", there(9, at(0)), there(9, at(0)), false},
             {"other size", absent, there(8, at(10)), false},
             {"gone", there(5, at(0)), absent, false},
         }) {
        EXPECT_EQ(wentLive(9, there(9, at(10)), before, after), live) << what;
    }
}

TEST(PublishDecision, BatchesFitOnTheDisk) {
    constexpr std::uint64_t mb = 1 << 20;
    const std::vector<std::uint64_t> many(300, 10);
    EXPECT_EQ(batchLength(many), 256U);
    for (const auto& [sizes, length] : std::vector<std::pair<std::vector<std::uint64_t>, std::size_t>>{
             {{1}, 1}, {{100 * mb, 1}, 1}, {{1, 100 * mb}, 1}, {{32 * mb, 32 * mb, 1}, 2}, {{40 * mb, 30 * mb}, 1}}) {
        EXPECT_EQ(batchLength(sizes), length);
    }
}

// The events of a publication.
struct Story {
    std::map<std::string, int> sent;
    std::map<std::string, int> published;
    std::map<std::string, std::string> failed;
    std::map<std::string, int> kept;
    int unconfirmed = 0;
    bool whole = false;

    PublishEvents events() {
        return {
            .sending = [this](const FileToPublish& file) { ++sent[file.path]; },
            .published = [this](const CompleteCopy& copy) { ++published[copy.file.path]; },
            .failed = [this](const auto& file, const PublishFailure& why) { failed[file.path] = why.message; },
            .notReplaced = [this](const FileToPublish& file, const auto&) { ++kept[file.path]; },
            .sizesUnconfirmed = [this] { ++unconfirmed; }};
    }

    [[nodiscard]] int sends() const {
        int sum = 0;
        for (const auto& [path, count] : sent) sum += count;
        return sum;
    }
};

Story publishAll(const FTPTransport& transport, const LocalSite& site) {
    std::vector<FileToPublish> files;
    for (const auto& [path, content] : site.files()) files.push_back(site.toPublish(path));
    Story story;
    story.whole = publish(transport, files, story.events());
    return story;
}

TEST(LyingServer, TornUploadIsSentAgain) {
    struct Lie {
        Words how;
        std::string message;
        std::string live; // in the end, if the server keeps lying
    };
    for (const auto& [how, message, live] : std::vector<Lie>{
             {{"--lie", "truncate"},
              "The server stored 8 bytes of page, which has 9. The live file was not replaced; the upload will be "
              "retried.",
              "old"},
             {{"--reply", "RNTO=250 Done"}, "The server confirmed the renaming of the uploaded page, but", "old"},
             {{"--lie", "alter"}, "The server confirmed the renaming of the uploaded page, but", "new words!"},
             {{"--lie", "vanish"}, "The server confirmed the renaming of the uploaded page, but", ""},
         }) {
        for (const bool once : {true, false}) {
            SCOPED_TRACE(::testing::PrintToString(how) + (once ? " once" : ""));
            auto extra = how;
            if (once) extra.emplace_back("--times=1");
            FtpServer server(Kind::odd, {.extra = extra});
            server.put("site/page", "old");
            const LocalSite site(server, {{"page", "new words"}});
            auto file = site.toPublish("page");
            const auto transport = site.transport();
            const auto [modified, size] = transport.facts("page");
            file.lastSeen = ServerVersion{.modified = modified, .size = size};
            Story story;
            (void)publish(transport, {file}, story.events());
            if (once && story.failed.empty()) {
                EXPECT_EQ(story.published["page"], 1);
                EXPECT_EQ(testing::readFile(server.root() / "site/page"), "new words");
                EXPECT_TRUE(testing::leftoverPartFiles(server.root()).size() <= 1);
            } else {
                EXPECT_TRUE(story.failed["page"].starts_with(message)) << story.failed["page"];
                EXPECT_EQ(testing::readPublished(server.root())["site/page"], live);
                EXPECT_LE(story.sends(), 3);
            }
            EXPECT_TRUE(story.kept.empty()) << "no other user edited it";
        }
    }
}

// Connections lost in the middle of a batch, and servers that end long sessions.
TEST(LostConnection, EachFileIsPublishedOnce) {
    struct Loss {
        Words how;
        int moreSends; // than files
    };
    constexpr int many = 12;
    for (const auto& [how, moreSends] : std::vector<Loss>{
             {{"--drop", "STOR", "--after", "5"}, 1},
             {{"--drop", "done", "--after", "5"}, 1},
             {{"--drop", "MLSD"}, 0},
             {{"--drop", "RNFR", "--after", "5"}, 0},
             {{"--drop", "RNTO", "--after", "5"}, 0},
             {{"--drop", "renamed", "--after", "5"}, 0},
             {{"--reply", "STOR=421 Too many files", "--after", "5"}, 1},
             {{"--reply", "RNFR=421 Too many renames", "--after", "5"}, 0},
             {{"--reply", "MLSD=550 No", "--drop", "MLST", "--after", "5"}, 0},
             {{"--no", "MLSD", "--drop", "MDTM", "--after", "5"}, 0},
         }) {
        SCOPED_TRACE(::testing::PrintToString(how));
        auto extra = how;
        extra.emplace_back("--times=1");
        FtpServer server(Kind::odd, {.extra = extra});
        FileTree files;
        for (int n = 0; n < many; ++n) files["page" + std::to_string(n)] = testing::randomBytes(50, n);
        const LocalSite site(server, files);
        const auto transport = site.transport();
        const auto story = publishAll(transport, site);
        EXPECT_TRUE(story.whole) << ::testing::PrintToString(story.failed);
        EXPECT_EQ(story.published.size(), files.size());
        for (const auto& [path, times] : story.published) EXPECT_EQ(times, 1) << path;
        EXPECT_EQ(story.sends(), many + moreSends);
        EXPECT_EQ(testing::readPublished(server.root() / "site"), files);
        transport.upload("page0", site.fingerprint("page0"));
        EXPECT_TRUE(testing::leftoverPartFiles(server.root()).empty());
    }
}

TEST(LostConnection, BatchEndsWhereTheServerFails) {
    FtpServer server(Kind::odd, {.extra = {"--drop", "STOR", "--after", "2"}});
    const LocalSite site(server, {{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}});
    const auto story = publishAll(site.transport(), site);
    EXPECT_FALSE(story.whole);
    EXPECT_EQ(story.published, (std::map<std::string, int>{{"a", 1}, {"b", 1}}));
    ASSERT_EQ(story.failed.size(), 1U);
    EXPECT_EQ(story.failed.begin()->first, "c");
    EXPECT_EQ(testing::readPublished(server.root()), (FileTree{{"site/a", "1"}, {"site/b", "2"}}));
}

TEST(WeakServer, SizesAreConfirmedByOtherCommands) {
    struct Weakness {
        Words how;
        int unconfirmed;
    };
    for (const auto& [how, unconfirmed] : std::vector<Weakness>{
             {{"--no", "MLSD"}, 0},
             {{"--no", "SIZE"}, 0},
             {{"--reply", "SIZE=550 No"}, 0},
             {{"--no", "MDTM"}, 0},
             {{"--no", "MLST", "--no", "SIZE"}, 0},
             {{"--no", "MLST", "--no", "MDTM"}, 0},
             {{"--no", "SIZE", "--no", "MLSD"}, 0},
             {{"--no", "SIZE", "--no", "MLSD", "--no", "MLST"}, 1},
             {{"--reply", "SIZE=550 No", "--no", "MLSD", "--no", "MLST"}, 1},
             {{"--mlsd-add", "type=file; ../escape"}, 0},
         }) {
        SCOPED_TRACE(::testing::PrintToString(how));
        FtpServer server(Kind::odd, {.extra = how});
        const FileTree files{{"a", "1"}, {"b", "22"}, {"c", "333"}, {"d/e", "4444"}};
        const LocalSite site(server, files);
        server.put("site/a", "old");
        const auto transport = site.transport();
        auto story = publishAll(transport, site);
        EXPECT_EQ(story.published.size(), files.size()) << ::testing::PrintToString(story.failed);
        EXPECT_EQ(story.sends(), 4);
        EXPECT_EQ(story.unconfirmed, unconfirmed);
        EXPECT_EQ(publishAll(transport, site).unconfirmed, 0) << "reported once";
        EXPECT_EQ(testing::readTree(server.root() / "site"), files);
    }
}

TEST(RefusedFile, OthersArePublishedAndNothingIsLeft) {
    FtpServer server(Kind::odd, {.extra = {"--reply", "RNTO=550 No", "--only", "page3"}});
    FileTree files;
    for (int n = 0; n < 6; ++n) files["page" + std::to_string(n)] = testing::randomBytes(50, n);
    const LocalSite site(server, files);
    testing::writeFile(site / "folder", "a file");
    server.put("site/folder/x", "a folder there");
    const auto story = publishAll(site.transport(), site);
    EXPECT_TRUE(story.whole);
    files.erase("page3");
    files["folder/x"] = "a folder there";
    EXPECT_EQ(testing::readTree(server.root() / "site"), files);
    EXPECT_EQ(story.published.size(), 5U);
    EXPECT_EQ(story.failed.at("page3"), "curl: (21) QUOT string not accepted: RNTO page3");
    EXPECT_TRUE(story.failed.contains("folder"));
    EXPECT_EQ(story.sent.at("page3"), 1);
}

TEST(FileMode, ScriptStaysExecutable) {
    if (const auto reason = FtpServer::unavailable(Kind::proftpd, Tls::none)) GTEST_SKIP() << *reason;
    FtpServer server(Kind::proftpd);
    FileTree files;
    for (const auto* name : {"one/run.cgi", "many/run.cgi", "many/1", "many/2", "many/3"}) files[name] = "new";
    const LocalSite site(server, files);
    const auto modeOf = [&](const auto& path) {
        return std::filesystem::status(server.root() / "site" / path).permissions();
    };
    for (const auto* script : {"one/run.cgi", "many/run.cgi"}) {
        server.put(std::string("site/") + script, "old");
        std::filesystem::permissions(server.root() / "site" / script, std::filesystem::perms{0751});
    }
    EXPECT_EQ(publishAll(site.transport(), site).published.size(), files.size());
    EXPECT_EQ(testing::readTree(server.root() / "site"), files);
    EXPECT_EQ(modeOf("one/run.cgi"), std::filesystem::perms{0751});
    EXPECT_EQ(modeOf("many/run.cgi"), std::filesystem::perms{0751});
    EXPECT_EQ(modeOf("many/1"), std::filesystem::perms{0644});
}

constexpr std::uint64_t kB = 1000;
constexpr UploadLimits small{
    .run = std::chrono::seconds(2), .largestPart = 256 * kB, .firstPart = 64 * kB, .worthContinuing = 64 * kB};

std::size_t countOf(const std::string& text, const std::string& word) {
    std::size_t count = 0;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

TEST(ManyFiles, OneLoginReplacesNoEdit) {
    for (const auto& [kind, edited] :
         {std::pair(Kind::odd, false), {Kind::odd, true}, {Kind::vsftpd, false}, {Kind::vsftpd, true}}) {
        SCOPED_TRACE(::testing::PrintToString(kind) + (edited ? " edited" : ""));
        const bool status = kind == Kind::vsftpd; // it has no MLSD, but lists a folder in its reply to STAT
        const testing::TemporaryFolder logs;
        FtpServer server(kind, {.extra = status ? Words() : Words{"--log", logs / "log"}});
        FileTree files;
        for (int n = 100; n < 250; ++n) files["page" + std::to_string(n)] = testing::randomBytes(50, n);
        const LocalSite site(server, files);
        std::vector<FileToPublish> wanted;
        for (const auto& [path, content] : files) {
            wanted.push_back(site.toPublish(path));
            wanted.back().lastSeen = KnownAbsent{};
        }
        Story story;
        std::vector<std::size_t> groups;
        auto events = story.events();
        const auto folder = server.root() / "site";
        events.goingLive = [&](const auto& copies) {
            groups.push_back(copies.size());
            if (!edited || groups.size() != 2) return;
            server.put("site/page249", "a colleague's");
            std::filesystem::create_symlink("page100", folder / "page248");
        };
        const auto transport = site.transport();
        if (status) transport.traits->lacksMLSD(); // as the first check finds out
        const auto began = std::chrono::steady_clock::now();
        EXPECT_TRUE(publish(transport, wanted, events));
        const bool slowly = std::chrono::steady_clock::now() - began > std::chrono::seconds(3);
        EXPECT_EQ(transport.traits->statusListing() == ServerTraits::Support::works, status);
        if (edited) files["page249"] = "a colleague's";
        EXPECT_EQ(std::filesystem::is_symlink(folder / "page248"), edited);
        std::filesystem::remove(folder / "page248");
        files.erase("page248");
        EXPECT_EQ(testing::readTree(folder), files);
        EXPECT_EQ(story.sends(), 150);
        EXPECT_EQ(story.published.size(), edited ? 148U : 150U);
        EXPECT_EQ(story.kept.size(), edited ? 2U : 0U);
        std::vector<std::size_t> expected{64, 64, edited ? 20U : 22U};
        if (status) expected = {4, 64, 64, edited ? 16U : 18U}; // few first, to learn what the server knows
        EXPECT_EQ(groups, expected);
        if (status || slowly) continue; // answers that became old are asked for again
        // An edit is asked about again, the files beside it are renamed, and its copy is removed: one login each.
        EXPECT_EQ(countOf(readFile(logs / "log").value_or(""), "USER"), edited ? 4U : 1U);
    }
}

TEST(LargeFile, FastLinesGetLongParts) {
    const UploadLimits usual;
    constexpr std::uint64_t mb = 1 << 20;
    using std::chrono::seconds;
    EXPECT_EQ(nextPart(usual, 0, seconds(0)), 16 * mb);
    EXPECT_EQ(nextPart(usual, 16 * mb, seconds(8)), 64 * mb);   // 2 MB/s
    EXPECT_EQ(nextPart(usual, 16 * mb, seconds(240)), 10 * mb); // 150 s of the 600 s of a run
    EXPECT_EQ(nextPart(usual, 1000, seconds(600)), mb / 4);
}

TEST(LargeFile, PartsDoNotDelayOtherFiles) {
    const testing::TemporaryFolder logs;
    FtpServer server(Kind::odd, {.extra = {"--rate", "100000", "--log", logs / "log"}});
    const FileTree files{{"a", testing::randomBytes(350 * kB)}, {"b", "small"}};
    const LocalSite site(server, files);
    auto transport = site.transport();
    transport.limits = small;
    std::vector<std::string> order;
    Story story;
    auto events = story.events();
    events.published = [&](const CompleteCopy& copy) { order.push_back(copy.file.path); };
    EXPECT_TRUE(publish(transport, {site.toPublish("a"), site.toPublish("b")}, events));
    EXPECT_EQ(order, (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(testing::readTree(server.root() / "site"), files);
    EXPECT_GE(countOf(readFile(logs / "log").value_or(""), "APPE"), 2U);
}

// Bytes of a broken connection can arrive late.
TEST(LargeFile, ForeignBytesAreNeverContinued) {
    FtpServer server(Kind::odd);
    const LocalSite site(server, {{"page", testing::randomBytes(300 * kB)}});
    auto transport = site.transport();
    transport.limits = small;
    const std::string name = ".zembrastel-0B1D9E8C-3C2C-4F4D-9B6E-0A5C3F0C9D11.part";
    server.put("site/" + name, testing::randomBytes(100 * kB, 7));
    transport.traits->keep(
        site.profile, "page",
        {.version = site.fingerprint("page"), .file = {.folder = "", .name = name}, .confirmed = 0, .most = 100 * kB});
    EXPECT_EQ(publishAll(transport, site).published.size(), 1U);
    EXPECT_EQ(testing::readPublished(server.root() / "site"), site.files());
}

TEST(KilledProgram, ItsTemporaryFilesAreRemoved) {
    const testing::TemporaryFolder state;
    FtpServer server(Kind::odd, {.extra = {"--hang", "data", "--times=1"}});
    const LocalSite site(server, {{"folder/a", testing::randomBytes(200 * kB)}, {"b", "1"}});
    const TemporaryJournal journal(state.path(), site.profile.id);
    auto transport = site.transport();
    transport.traits = std::make_shared<ServerTraits>(journal);
    std::jthread canceller([&] {
        EXPECT_TRUE(testing::eventually([&] { return !testing::leftoverPartFiles(server.root()).empty(); }));
        EXPECT_EQ(journal.read().size(), 1U);
        transport.control->cancel();
    });
    EXPECT_THROW(transport.upload("folder/a", site.fingerprint("folder/a")), Cancelled);
    canceller.join();
    auto next = site.transport();
    next.traits = std::make_shared<ServerTraits>(journal);
    next.upload("b", site.fingerprint("b"));
    EXPECT_TRUE(testing::leftoverPartFiles(server.root()).empty());
    EXPECT_TRUE(std::filesystem::is_empty(state.path()));
}

TEST(Staging, FullDiskDelaysNoOtherFile) {
    FtpServer server(Kind::odd);
    const LocalSite site(server, {{"a", ""}, {"b", "1"}});
    std::filesystem::resize_file(site / "a", std::uintmax_t{1} << 42);
    Story story;
    EXPECT_TRUE(publish(site.transport(), {site.toPublish("a"), site.toPublish("b")}, story.events()));
    EXPECT_EQ(story.published.size(), 1U);
    EXPECT_TRUE(story.failed.at("a").starts_with("There is no room for a copy of a to upload from: it has 4194304 MB"))
        << story.failed.at("a");
}

// The rename is late after a suspension of the machine, or with a slow disk.
TEST(LateStep, EditBeforeALateRenameIsNotReplaced) {
    FtpServer server(Kind::odd);
    const LocalSite site(server, {{"a", "mine"}});
    server.put("site/a", "old");
    const auto transport = site.transport();
    auto file = site.toPublish("a");
    file.lastSeen = transport.findVersion("a").value();
    Story story;
    auto events = story.events();
    events.goingLive = [&](const auto&) {
        server.put("site/a", "a colleague's");
        std::this_thread::sleep_for(std::chrono::milliseconds(800));
    };
    EXPECT_TRUE(publish(transport, {file}, events));
    EXPECT_EQ(story.kept.size(), 1U);
    EXPECT_EQ(testing::readTree(server.root()), (FileTree{{"site/a", "a colleague's"}}));
}

TEST(Stop, FinishesRenamesButDoesNotWaitForAHangingServer) {
    for (const bool hangs : {false, true}) {
        const testing::TemporaryFolder logs;
        auto extra = hangs ? Words{"--hang", "RNTO"} : Words{"--delay", "0.02"};
        extra.insert(extra.end(), {"--log", logs / "log"});
        FtpServer server(Kind::odd, {.extra = extra});
        const LocalSite site(server, {{"a", "1"}, {"b", "2"}});
        const auto transport = site.transport();
        std::chrono::steady_clock::time_point stopped;
        std::jthread canceller([&] {
            EXPECT_TRUE(testing::eventually([&] { return countOf(readFile(logs / "log").value_or(""), "RNFR") > 0; }));
            stopped = std::chrono::steady_clock::now();
            transport.control->cancel();
        });
        Story story;
        EXPECT_THROW((void)publish(transport, {site.toPublish("a"), site.toPublish("b")}, story.events()), Cancelled);
        canceller.join();
        const auto lasted = std::chrono::steady_clock::now() - stopped;
        EXPECT_LT(lasted, testing::atOnce);
        if (hangs || lasted >= timeAfterStop) continue; // on a slow machine
        EXPECT_EQ(story.published.size(), 2U);
        EXPECT_EQ(testing::readTree(server.root() / "site"), site.files());
    }
}

// The server takes 0.1 s for each command, so no more than ten lie between the answer about a live file and its rename.
TEST(LateStep, AnswersAreFreshOverASlowLine) {
    const testing::TemporaryFolder logs;
    FtpServer server(Kind::odd, {.extra = {"--delay", "0.1", "--log", logs / "log"}});
    const LocalSite site(server, {{"a", "1"}, {"b", "1"}, {"c", "1"}, {"d", "1"}, {"e", "1"}});
    const auto transport = site.transport();
    std::vector<FileToPublish> wanted;
    for (const auto& [path, content] : site.files()) wanted.push_back(site.toPublish(path));
    Story story;
    EXPECT_TRUE(publish(transport, wanted, story.events()));
    EXPECT_EQ(story.published.size(), wanted.size());
    EXPECT_EQ(testing::readTree(server.root() / "site"), site.files());
    const std::string log = readFile(logs / "log").value();
    std::map<std::string_view, std::size_t> asked;
    std::size_t number = 0;
    for (const auto line : split(log, '\n')) {
        ++number;
        const auto words = splitNonEmpty(line, ' ');
        if (words.size() < 2) continue;
        if (words[0] == "MLST" || words[0] == "MDTM") asked[words[1]] = number;
        if (words[0] == "RNTO") {
            EXPECT_LE(number - asked.at(words[1]), 10U) << log;
        }
    }
}

} // namespace
} // namespace zembrastel
