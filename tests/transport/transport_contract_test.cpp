// The operations that must work on every server, without TLS and with explicit and implicit TLS of both versions.
#include "support/certificates.h"
#include "support/local_site.h"
#include "support/wait_for.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::failureOf;
using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;
using TlsVersion = FtpServer::TlsVersion;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1) + std::chrono::hours(12);
const std::string awkwardName = "a #?é \"[{x}]'.txt";

class TransportContract : public ::testing::TestWithParam<std::tuple<Kind, Tls, TlsVersion>> {
protected:
    void SetUp() override {
        const auto [kind, tls, version] = GetParam();
        if (const auto reason = FtpServer::unavailable(kind, tls)) GTEST_SKIP() << *reason;
        if (tls != Tls::none) trust.emplace(testing::certificates().ca);
        options = {.tls = tls, .version = version};
        server.emplace(kind, options);
    }

    static Kind kind() { return std::get<Kind>(GetParam()); }

    void serveSlowly() {
        options.rateKiB = 64;
        server.emplace(kind(), options);
    }

    void putDated(const std::string& path, const std::string& content, std::chrono::system_clock::time_point date) {
        server->put(path, content);
        testing::touch(server->root() / path, date);
    }

    std::string onServer(const std::string& path) const { return testing::readFile(server->root() / path); }

    std::optional<testing::ScopedTrust> trust;
    FtpServer::Options options;
    std::optional<FtpServer> server;
};

TEST_P(TransportContract, FolderIsListedWithKindsNamesAndDates) {
    putDated("site/" + awkwardName, "x", moment);
    server->put("site/folder with blanks/inside", "x");
    server->put("site/.htaccess", "x");
    const LocalSite site(*server);
    const auto transport = site.transport();
    EXPECT_EQ(transport.test(), 3U);
    auto entries = transport.list("");
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].name, ".htaccess");
    EXPECT_EQ(entries[1].name, awkwardName);
    EXPECT_FALSE(entries[1].directory);
    EXPECT_EQ(entries[2].name, "folder with blanks");
    EXPECT_TRUE(entries[2].directory);
    const bool hasMLSD = kind() != Kind::vsftpd;
    EXPECT_EQ(entries[1].modified, hasMLSD ? std::optional(toRemoteDate(moment)) : std::nullopt);
    EXPECT_EQ(transport.modificationDate(awkwardName), toRemoteDate(moment));
    EXPECT_EQ(transport.list("folder with blanks").size(), 1U);
}

TEST_P(TransportContract, BatchReplacesOnlyVersionsThatWereSeen) {
    FileTree files;
    const int many = options.tls == Tls::none ? 70 : 10; // some servers with TLS take one login for each
    for (int n = 0; n < many; ++n) files["deep/er/" + std::to_string(n)] = testing::randomBytes(100 + n, n);
    files.insert({{"new", "1"}, {"same", "22"}, {"edited", "333"}, {"appeared", "4444"}, {"empty", ""}});
    files["new folder/" + awkwardName] = testing::randomBytes(3'000'000, 7);
    for (const auto* path : {"same", "edited", "appeared"}) putDated(std::string("site/") + path, "theirs", moment);
    const LocalSite site(*server, files);
    const auto transport = site.transport();
    const ServerVersion seen{.modified = toRemoteDate(moment), .size = 6};
    std::vector<FileToPublish> asked;
    for (const auto& [path, content] : files) asked.push_back(site.toPublish(path));
    const auto lastSeen = [&asked](const std::string& path) -> LastSeen& {
        return std::ranges::find(asked, path, &FileToPublish::path)->lastSeen;
    };
    lastSeen("same") = seen;
    lastSeen("edited") = ServerVersion{.modified = seen.modified - std::chrono::hours(1), .size = 6};
    lastSeen("appeared") = KnownAbsent{};
    lastSeen("new") = KnownAbsent{};
    std::map<std::string, std::optional<ServerVersion>> announced, published, kept;
    const bool whole = publish(
        transport, asked,
        {.goingLive =
             [&](const std::vector<CompleteCopy>& copies) {
                 for (const auto& [file, version] : copies) announced[file.path] = version;
             },
         .published = [&](const CompleteCopy& copy) { published[copy.file.path] = copy.version; },
         .failed = [](const auto& file, const auto& why) { ADD_FAILURE() << file.path << ": " << why.message; },
         .notReplaced = [&](const auto& file, const auto& found) { kept[file.path] = found; },
         .sizesUnconfirmed = [] { ADD_FAILURE() << "sizes unconfirmed"; }});
    EXPECT_TRUE(whole);
    EXPECT_EQ(announced, published);
    EXPECT_EQ(published.size(), files.size() - 2);
    EXPECT_EQ(kept, (std::map<std::string, std::optional<ServerVersion>>{{"edited", seen}, {"appeared", seen}}));
    for (const auto& [path, version] : published) EXPECT_EQ(onServer("site/" + path), files.at(path)) << path;
    for (const auto* path : {"edited", "appeared"}) EXPECT_EQ(onServer(std::string("site/") + path), "theirs");
    for (const auto* path : {"new", "deep/er/9"}) {
        ASSERT_TRUE(published.at(path)) << path;
        EXPECT_EQ(published.at(path)->modified, transport.modificationDate(path)) << path;
        EXPECT_EQ(published.at(path)->size, files.at(path).size()) << path;
    }
    EXPECT_TRUE(testing::leftoverPartFiles(server->root()).empty());
}

TEST_P(TransportContract, InitialDownloadKeepsNewerLocalFiles) {
    putDated("site/sub/missing.txt", "from server", moment);
    server->put("site/empty", "");
    server->put("site/newer.txt", "newer on server");
    server->put("site/older.txt", "older on server");
    server->put("site/kind", "a file on the server");
    server->put("site/node_modules/x", "excluded");
    LocalSite site(*server, {{"newer.txt", "local"}, {"older.txt", "local"}, {"kind/inside", "a folder here"}});
    testing::touch(server->root() / "site/newer.txt", moment + std::chrono::seconds(2));
    testing::touch(site / "newer.txt", moment);
    testing::touch(server->root() / "site/older.txt", moment + std::chrono::seconds(1));
    testing::touch(site / "older.txt", moment);
    ASSERT_EQ(::chmod((site / "newer.txt").c_str(), 0640), 0);
    std::set<std::string> lines;
    FileMap installed;
    site.transport().downloadTree(
        "", 0, [&](const std::string& line) { lines.insert(line); },
        [&](const std::string& path, const Fingerprint& fingerprint) { installed.set(path, fingerprint); });
    EXPECT_EQ(
        site.files(), (FileTree{
                          {"sub/missing.txt", "from server"},
                          {"empty", ""},
                          {"newer.txt", "newer on server"},
                          {"older.txt", "local"},
                          {"kind/inside", "a folder here"}}));
    EXPECT_EQ(site.backups(), (FileTree{{"newer.txt", "local"}}));
    EXPECT_EQ(
        installed, (FileMap{
                       {"sub/missing.txt", site.fingerprint("sub/missing.txt")},
                       {"empty", site.fingerprint("empty")},
                       {"newer.txt", site.fingerprint("newer.txt")}}));
    EXPECT_EQ(
        site.fingerprint("sub/missing.txt").modified, std::chrono::duration<double>(moment.time_since_epoch()).count());
    EXPECT_EQ(fs::status(site / "newer.txt").permissions(), fs::perms(0640));
    EXPECT_EQ(
        lines,
        (std::set<std::string>{
            "Downloading sub/missing.txt", "Downloading empty", "Downloading newer server copy: newer.txt",
            "Updated older local file: newer.txt (previous local copy backed up)",
            "Kept local file with the same or newer date: older.txt", "Kept local item with a different type: kind"}));
}

TEST_P(TransportContract, ForeignEditReplacesLocalFileWithBackup) {
    LocalSite site(
        *server, {{"file9.txt", "mine"}, {"file10.txt", "mine"}, {"same.txt", "same"}, {"off/x.txt", "mine"}});
    for (const auto* path : {"file9.txt", "file10.txt", "same.txt", "off/x.txt"}) {
        testing::touch(site / path, moment);
        putDated(std::string("site/") + path, "theirs", moment + std::chrono::hours(1));
    }
    testing::touch(server->root() / "site/same.txt", moment + std::chrono::seconds(1));
    server->put("site/only here.txt", "x");
    site.profile.syncSelection = DownloadSelection{.rules = {{"", true}, {"off", false}}};
    const std::string leftover = ".zembrastel-01234567-89AB-CDEF-0123-456789ABCDEF.part";
    testing::writeFile(site / leftover, "half"); // a comparison removes nothing
    const auto transport = site.transport();
    const FileMap baseline{{"file9.txt", Fingerprint{}}};
    const auto changes = transport.newerRemoteFiles({baseline}, [](const std::string&) {}).changes;
    const auto date = toRemoteDate(moment + std::chrono::hours(1));
    ASSERT_EQ(
        changes, (std::vector<RemoteChange>{
                     {"file9.txt", site.fingerprint("file9.txt"), date, true},
                     {"file10.txt", site.fingerprint("file10.txt"), date, false}}));
    EXPECT_EQ(transport.newerRemoteFiles({{}, {{"file9.txt", date}}}, [](const std::string&) {}).changes.size(), 1U);

    const auto installed = transport.replaceLocal(changes[0]);
    EXPECT_EQ(installed, site.fingerprint("file9.txt"));
    EXPECT_EQ(testing::readFile(site / "file9.txt"), "theirs");
    EXPECT_EQ(site.backups(), (FileTree{{"file9.txt", "mine"}}));
    EXPECT_EQ(testing::leftoverPartFiles(site.root()), std::vector{leftover});
    EXPECT_TRUE(transport.newerRemoteFiles({{{"file9.txt", installed}}, {{"file10.txt", date}}}, [](const auto&) {})
                    .changes.empty());
}

TEST_P(TransportContract, CancelledTransferHarmsNeitherSide) {
    serveSlowly();
    const auto large = testing::randomBytes(2'000'000); // takes 30 s
    LocalSite site(*server, {{"page", large}});
    server->put("site/page", "old");
    server->put("site/other", large);
    for (const bool uploads : {true, false}) {
        const auto transport = site.transport();
        std::chrono::steady_clock::time_point stopped;
        std::jthread canceller([&] {
            EXPECT_TRUE(testing::eventually(
                [&] { return !testing::leftoverPartFiles(uploads ? server->root() : site.root()).empty(); }));
            stopped = std::chrono::steady_clock::now();
            transport.control->cancel();
        });
        const auto ignore = [](const auto&...) {};
        EXPECT_THROW(
            uploads ? transport.upload("page", site.fingerprint("page"))
                    : transport.downloadTree("", 0, ignore, ignore),
            Cancelled);
        canceller.join();
        EXPECT_LT(std::chrono::steady_clock::now() - stopped, testing::atOnce);
        EXPECT_EQ(testing::readPublished(server->root()), (FileTree{{"site/page", "old"}, {"site/other", large}}));
        EXPECT_EQ(site.files(), (FileTree{{"page", large}}));
    }
}

const std::string noFolder = "curl: (9) Server denied you to change to the given directory";

TEST_P(TransportContract, RefusalsHaveTheSameMessageOnEveryServer) {
    server->put("site/page", "x");
    LocalSite site(*server);
    EXPECT_EQ(failureOf([&] { return site.transport().list("missing"); }), noFolder);
    EXPECT_EQ(
        failureOf([&] { return site.transport().modificationDate("missing"); }), "curl: (78) The file does not exist");
    EXPECT_EQ(failureOf([&] { return site.transport().modificationDate("missing/page"); }), noFolder);
    site.password = "secret-not-s3cret";
    if (kind() == Kind::vsftpd) site.profile.username = "nobody-here"; // its anonymous user has no password
    EXPECT_EQ(failureOf([&] { return site.transport().modificationDate("page"); }), "curl: (67) Access denied: 530");
}

TEST_P(TransportContract, MissingRemoteFolderIsMadeWholeOnRequest) {
    LocalSite site(*server);
    site.profile.remoteFolder += "/new/deep er";
    EXPECT_EQ(failureOf([&] { return site.transport().test(); }), noFolder);
    site.transport().createFolder();
    EXPECT_EQ(site.transport().test(), 0U);
    site.transport().createFolder(); // it is there
    site.password = "secret-not-s3cret";
    if (kind() == Kind::vsftpd) site.profile.username = "nobody-here";
    EXPECT_THROW(site.transport().createFolder(), SyncError);
}

std::string nameOf(const ::testing::TestParamInfo<TransportContract::ParamType>& info) {
    const auto [kind, tls, version] = info.param;
    constexpr std::array protections{"Plain", "Explicit", "Implicit"};
    constexpr std::array versions{"", "Tls12", "Tls13"};
    return FtpServer::name(kind) + protections.at(static_cast<std::size_t>(tls))
           + versions.at(static_cast<std::size_t>(version));
}

using ::testing::Combine;
using ::testing::Values;
const auto everyServer = Values(Kind::proftpd, Kind::vsftpd, Kind::pureftpd, Kind::odd);

// Each server without TLS, and once with either kind and either version of it. The rest takes long: scripts/torture.
INSTANTIATE_TEST_SUITE_P(
    Plain, TransportContract, Combine(everyServer, Values(Tls::none), Values(TlsVersion::any)), nameOf);
INSTANTIATE_TEST_SUITE_P(
    Explicit, TransportContract, Combine(everyServer, Values(Tls::explicitTls), Values(TlsVersion::tls13)), nameOf);
INSTANTIATE_TEST_SUITE_P(
    Implicit, TransportContract, Combine(everyServer, Values(Tls::implicitTls), Values(TlsVersion::tls12)), nameOf);
INSTANTIATE_TEST_SUITE_P(
    RestExplicit, TransportContract, Combine(everyServer, Values(Tls::explicitTls), Values(TlsVersion::tls12)), nameOf);
INSTANTIATE_TEST_SUITE_P(
    RestImplicit, TransportContract, Combine(everyServer, Values(Tls::implicitTls), Values(TlsVersion::tls13)), nameOf);

} // namespace
} // namespace zembrastel
