// What servers, networks and other programs do wrong, and what must then still be as it was.
#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "support/certificates.h"
#include "support/local_site.h"
#include "support/wait_for.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::failureOf;
using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using Words = std::vector<std::string>;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);

// For what a download reports.
const auto ignore = [](const auto&...) {};

FtpServer oddServer(Words arguments = {}) { return FtpServer(FtpServer::Kind::odd, {.extra = std::move(arguments)}); }

Words namesIn(const std::vector<RemoteEntry>& entries) {
    Words names;
    for (const auto& entry : entries) names.push_back(entry.name + (entry.directory ? "/" : ""));
    std::sort(names.begin(), names.end());
    return names;
}

TEST(ListingFaults, ServersThatListBadlyAreReadAsFarAsTheyCanBeTrusted) {
    struct Case {
        Words oddity;
        Words names;
    };
    const Words both{"a b.txt", "folder/"};
    for (const auto& [oddity, names] : std::vector<Case>{
             {{"--no", "MLSD"}, both},
             {{"--no", "MLSD", "--list", "iis"}, both},
             {{"--list", "odd"}, both},
             {{"--reply", "LIST=550 denied"}, both},
             {{"--hide", "a*"}, {"folder/"}},
             {{"--mlsd-add", "type=file; ../escape"}, both},
             {{"--mlsd-add", "size=3; without-type"}, both},
             {{"--mlsd-add", "type=file; caf\\xe9"}, both},
         }) {
        FtpServer server = oddServer(oddity);
        server.put("site/a b.txt", "x");
        server.put("site/folder/x", "x");
        EXPECT_EQ(namesIn(LocalSite(server).transport().list("")), names) << oddity.back();
    }
    FtpServer unreadable = oddServer({"--no", "MLSD", "--list", "odd"});
    unreadable.put("site/a", "x");
    EXPECT_EQ(
        failureOf([&] { return LocalSite(unreadable).transport().list(""); }),
        "Cannot safely read this server's directory format. The server should support MLSD or standard "
        "Unix/Windows LIST.");
}

TEST(ListingFaults, DateThatTheServerDoesNotGiveIsNeverInvented) {
    const std::string missing =
        "The server did not provide a modification date for a. Uploads remain paused until you choose how to proceed.";
    for (const Words& oddity : {Words{"--no", "MDTM"}, Words{"--reply", "MDTM=213 garbage"}}) {
        FtpServer server = oddServer(oddity);
        server.put("site/a", "x");
        EXPECT_EQ(failureOf([&] { return LocalSite(server).transport().modificationDate("a"); }), missing);
    }
}

// What somebody between the program and its server can do about TLS, and what the user then reads.
TEST(ConnectionFaults, NeitherLoginNorFileIsSentToWhoeverTampersWithTls) {
    using Tls = FtpServer::Tls;
    const auto& certificates = testing::certificates();
    struct Tampering {
        Tls tls;
        Words how = {};
        std::string told;
        fs::path trusted = testing::certificates().ca;
        fs::path certificate = testing::certificates().server;
        bool loggedIn = false; // over TLS, before the tampering
    };
    const std::string unknownIssuer = "curl: (60) SSL certificate problem: unable to get local issuer certificate";
    const std::vector<Tampering> cases{
        {Tls::none, {"--no", "AUTH"}, "curl: (64) Requested SSL level failed"},
        {Tls::none, {"--reply", "AUTH=234 Go on\r\n230 Logged in"}, "curl: (8)"},
        {Tls::none, {"--reply", "AUTH=230 Logged in"}, "curl: (64) Requested SSL level failed"},
        {.tls = Tls::explicitTls,
         .how = {"--reply", "PROT=536 In clear text only"},
         .told = "curl: (64) Requested SSL level failed",
         .loggedIn = true},
        {.tls = Tls::explicitTls, .told = unknownIssuer, .trusted = certificates.otherCa},
        {.tls = Tls::implicitTls, .told = unknownIssuer, .trusted = certificates.otherCa},
        {.tls = Tls::implicitTls, .told = "curl: (60) SSL", .certificate = certificates.wrongHost},
        {.tls = Tls::implicitTls,
         .told = "curl: (60) SSL certificate problem: certificate has expired",
         .certificate = certificates.expired},
    };
    for (const auto& [tls, how, told, trusted, certificate, loggedIn] : cases) {
        SCOPED_TRACE(::testing::PrintToString(how) + told);
        const testing::ScopedTrust trust(trusted);
        const testing::TemporaryFolder logs;
        auto extra = how;
        extra.insert(extra.end(), {"--log", (logs / "log").string()});
        FtpServer server(FtpServer::Kind::odd, {.tls = tls, .certificate = certificate, .extra = extra});
        LocalSite site(server);
        if (tls == Tls::none) site.profile.transport = TransferProtocol::ftps;
        testing::writeFile(site / "page", "x");
        for (const bool uploads : {false, true}) {
            const auto failure = failureOf([&] {
                if (uploads) site.transport().upload("page", site.fingerprint("page"));
                return site.transport().test();
            });
            EXPECT_TRUE(failure.starts_with(told)) << failure;
        }
        const std::string sent = readFile(logs / "log").value_or("");
        EXPECT_EQ(sent.find("PASS") != std::string::npos, loggedIn) << sent;
        EXPECT_EQ(sent.find("USER") != std::string::npos, loggedIn) << sent;
        EXPECT_EQ(sent.find("STOR"), std::string::npos) << sent;
        EXPECT_TRUE(testing::readTree(server.root()).empty());
    }
}

TEST(ConnectionFaults, PasswordIsMaskedInEveryMessageAndRefusedWhereItCouldBreakTheConfiguration) {
    FtpServer server = oddServer();
    LocalSite site(server);
    site.password = "Access";
    EXPECT_EQ(failureOf([&] { return site.transport().test(); }), "curl: (67) •••• denied: 530");
    using namespace std::string_literals;
    for (const auto& bad : {"line\nbreak"s, "line\u2028break"s, "nul\0l"s}) {
        site.password = bad;
        EXPECT_EQ(
            failureOf([&] { return site.transport().test(); }),
            "FTP passwords cannot contain line breaks or null characters.");
    }
}

TEST(ConnectionFaults, AwkwardLoginsArriveUnchanged) {
    const std::string username = "we\"b\\ us#er";
    const std::string password = "p\"a\\s's {w}:\t %é#";
    FtpServer server = oddServer({"--user=" + username, "--password=" + password});
    server.put("site/a", "x");
    LocalSite site(server);
    site.profile.username = username;
    site.password = password;
    EXPECT_EQ(site.transport().test(), 1U);
}

class BrokenUpload : public ::testing::TestWithParam<Words> {};

TEST_P(BrokenUpload, LeavesTheLiveFileAsItWasAndTheNextAttemptSucceeds) {
    auto oddity = GetParam();
    oddity.emplace_back("--times=1");
    FtpServer server = oddServer(oddity);
    server.put("site/page", "old");
    const auto content = testing::randomBytes(400'000);
    const LocalSite site(server, {{"page", content}});
    const auto upload = [&] { site.transport().upload("page", site.fingerprint("page")); };
    EXPECT_NE(failureOf(upload), "");
    EXPECT_EQ(testing::readFile(server.root() / "site/page"), "old");
    EXPECT_EQ(failureOf(upload), "");
    EXPECT_EQ(testing::readFile(server.root() / "site/page"), content);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, BrokenUpload,
    ::testing::Values(
        Words{"--drop", "data"}, Words{"--drop-data", "data"}, Words{"--final", "552 Disk full"},
        Words{"--reply", "STOR=553 Not allowed"}));

// The children of this process that run curl.
std::vector<fs::path> runningCurls() {
    std::vector<fs::path> found;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::string stat;
        std::getline(std::ifstream(entry.path() / "stat"), stat, '\0');
        const auto name = stat.find("(curl) ");
        if (name == std::string::npos) continue;
        std::istringstream fields(stat.substr(name + 7));
        char state = 0;
        pid_t parent = 0;
        fields >> state >> parent;
        if (parent == ::getpid() && state != 'Z') found.push_back(entry.path());
    }
    return found;
}

std::string bytesOf(const fs::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

std::vector<std::string> wordsOf(const fs::path& file) {
    std::vector<std::string> words;
    std::istringstream bytes(bytesOf(file));
    for (std::string word; std::getline(bytes, word, '\0');) words.push_back(word);
    return words;
}

// What another program of the user could see while curl runs, and what the user's other programs could make it do.
TEST(Cancelling, EndsAHangingTransferAtOnceWithNoTraceOfThePasswordOrTheWork) {
    testing::TemporaryFolder temporary;
    ::setenv("TMPDIR", temporary.path().c_str(), 1);
    ::setenv("SSLKEYLOGFILE", (temporary / "keys").c_str(), 1);
    const testing::TemporaryFolder logs;
    FtpServer server = oddServer({"--hang", "STOR", "--echo", "--log", logs / "log"});
    server.put("site/page", "old");
    const LocalSite site(server, {{"page", "new"}});
    for (const bool diagnosing : {false, true}) {
        const auto transport = site.transport();
        const Descriptor file(::open((site / "page").c_str(), O_RDONLY | O_CLOEXEC));
        bool cancelled = false;
        std::jthread worker([&] {
            try {
                if (diagnosing) {
                    (void)transport.transcribe("x", false, {{"upload-file", ChildProcess::filePath}}, file.get());
                } else {
                    transport.upload("page", site.fingerprint("page"));
                }
            } catch (const Cancelled&) {
                cancelled = true;
            }
        });
        EXPECT_TRUE(
            testing::eventually([&] { return readFile(logs / "log").value_or("").find("STOR") != std::string::npos; }));
        fs::remove(logs / "log");
        const auto curls = runningCurls();
        EXPECT_EQ(curls.size(), 1U);
        for (const auto& curl : curls) {
            // Without the first of them the user's own settings of curl would count.
            EXPECT_EQ(wordsOf(curl / "cmdline"), (Words{"/usr/bin/curl", "--disable", "--config", "-"}));
            const auto environment = wordsOf(curl / "environ");
            EXPECT_TRUE(std::ranges::none_of(environment, [](const auto& variable) {
                return variable.starts_with("SSLKEYLOGFILE=") || variable.find("s3cret") != std::string::npos;
            }));
            EXPECT_NE(std::ranges::find(environment, "TMPDIR=" + temporary.path().string()), environment.end());
        }
        for (const auto& [path, content] : testing::readTree(temporary.path())) {
            EXPECT_EQ(content.find("s3cret"), std::string::npos) << path;
        }
        const auto asked = std::chrono::steady_clock::now();
        transport.control->cancel();
        worker.join();
        EXPECT_LT(std::chrono::steady_clock::now() - asked, testing::atOnce);
        EXPECT_TRUE(cancelled);
        EXPECT_TRUE(runningCurls().empty());
        for (const auto& item : fs::directory_iterator(temporary.path())) {
            EXPECT_TRUE(item.path().filename().string().starts_with("zembrastel-test-"))
                << item.path() << " was left behind";
        }
        EXPECT_EQ(testing::readFile(server.root() / "site/page"), "old");
        EXPECT_THROW((void)transport.test(), Cancelled) << "a stopped control starts nothing more";
    }
    ::unsetenv("SSLKEYLOGFILE");
    ::unsetenv("TMPDIR");
}

TEST(LocalFaults, LeftoversOfAKilledDownloadAreClearedAwayWithoutLosingAnEditOrADownloadUnderWay) {
    FtpServer server = oddServer({"--rate", "100000"});
    server.put("site/page", testing::randomBytes(2'000'000));
    const std::string leftover = ".zembrastel-01234567-89AB-CDEF-0123-456789ABCDEF.part";
    const FileTree others{{"kept", "mine"}, {"sub/.zembrastel-notes.part", "mine"}};
    const LocalSite site(server, others);
    testing::writeTree(site.root(), {{leftover, ""}, {"sub/" + leftover, "perhaps an edit"}});
    const auto check = [&site] { (void)site.transport().newerRemoteFiles({}, {}, [](const std::string&) {}); };

    const auto slow = site.transport();
    check();
    EXPECT_EQ(site.files(), others);
    EXPECT_EQ(site.backups(), (FileTree{{"sub/" + leftover, "perhaps an edit"}}));
    std::jthread checker([&] {
        const auto parts = [&site] {
            auto all = testing::leftoverPartFiles(site.root());
            std::erase_if(all, [](const auto& path) {
                return path.starts_with(".zembrastel-backups/") || path.starts_with("sub/");
            });
            return all;
        };
        // One that has nothing in it may not be locked yet.
        EXPECT_TRUE(testing::eventually([&] {
            const auto all = parts();
            return !all.empty() && fs::file_size(site.root() / *all.begin()) > 0;
        }));
        const auto before = parts();
        check();
        EXPECT_EQ(parts(), before);
        slow.control->cancel();
    });
    EXPECT_THROW(slow.downloadTree("", 0, ignore, ignore), Cancelled);
}

class ReplaceGuards : public ::testing::Test {
protected:
    ReplaceGuards() {
        server.put("site/page", testing::randomBytes(250'000));
        testing::touch(server.root() / "site/page", moment + std::chrono::hours(1));
        testing::touch(site / "page", moment);
    }

    RemoteChange change() const {
        return {
            .path = "page",
            .local = site.fingerprint("page"),
            .remoteDate = toRemoteDate(moment + std::chrono::hours(1)),
            .bothChanged = false};
    }

    // The download does not end before the edit.
    std::string replaceWhile(const std::function<void()>& edit) {
        testing::writeFile(hold, "");
        std::jthread editor([&] {
            EXPECT_TRUE(testing::eventually([&] { return !testing::leftoverPartFiles(site.root()).empty(); }));
            edit();
            fs::remove(hold);
        });
        return failureOf([&] { return site.transport().replaceLocal(change()); });
    }

    testing::TemporaryFolder folder;
    const fs::path hold = folder / "hold";
    FtpServer server = oddServer({"--hold", hold});
    LocalSite site{server, {{"page", "mine"}}};
};

TEST_F(ReplaceGuards, AnEditOnEitherSideIsNeverLost) {
    auto stale = change();
    stale.local.size = 1;
    EXPECT_EQ(
        failureOf([&] { return site.transport().replaceLocal(stale); }),
        "page changed locally after the comparison. Review it again before replacing it.");
    stale = change();
    stale.remoteDate += std::chrono::seconds(1);
    EXPECT_EQ(
        failureOf([&] { return site.transport().replaceLocal(stale); }),
        "page changed on the server after the comparison. Check again for the latest version.");
    EXPECT_EQ(
        replaceWhile([&] { testing::touch(server.root() / "site/page", moment + std::chrono::hours(2)); }),
        "page changed on the server during the download. The local copy was kept; check again.");
    testing::touch(server.root() / "site/page", moment + std::chrono::hours(1));
    EXPECT_EQ(site.files(), (FileTree{{"page", "mine"}}));
    EXPECT_EQ(
        replaceWhile([&] { testing::writeFile(site / "page", "edited"); }),
        "page was edited locally while downloading. The local edit was kept; check again.");
    EXPECT_EQ(site.files(), (FileTree{{"page", "edited"}}));
    EXPECT_TRUE(site.backups().empty());
}

TEST(LocalFaults, LinksAreNeverFollowedInEitherDirection) {
    FtpServer server = oddServer();
    server.put("site/dir/page", "server");
    LocalSite site(server, {{"real/page", "x"}});
    fs::create_directory_symlink(site / "real", site / "dir");
    const auto transport = site.transport();
    const std::string refused = "Refusing to follow a local symbolic link: dir";
    EXPECT_EQ(failureOf([&] { transport.downloadTree("", 0, ignore, ignore); }), refused);
    EXPECT_EQ(failureOf([&] { transport.upload("dir/page", site.fingerprint("real/page")); }), refused + "/page");
    EXPECT_EQ(failureOf([&] { return transport.safeLocalURL("../x"); }), "Unsafe local path.");

    fs::rename(site.root(), site.root().string() + ".moved");
    fs::create_directory_symlink(site.root().string() + ".moved", site.root());
    EXPECT_EQ(
        failureOf([&] { return transport.safeLocalURL("real/page"); }),
        "The local folder has been replaced by a symbolic link.");
}

TEST(LocalFaults, OnlyTheVersionThatWasDecidedOnIsEverSent) {
    FtpServer server = oddServer();
    server.put("site/page", "old");
    const LocalSite site(server, {{"page", "new"}});
    auto other = site.fingerprint("page");
    ++other.inode;
    const auto transport = site.transport();
    EXPECT_EQ(
        failureOf([&] { transport.upload("page", other); }), "File changed before uploading; it will be retried.");
    for (const std::string path : {"", ".", "..", "a/..", "page\n"}) {
        EXPECT_EQ(failureOf([&] { transport.upload(path, {}); }), "Invalid filename.") << path;
    }
    EXPECT_EQ(testing::readTree(server.root()), (FileTree{{"site/page", "old"}}));
}

TEST(LocalFaults, RemoteFoldersWithoutEndStopAtTheLimit) {
    FtpServer server = oddServer();
    server.put("site/last/beyond/page", "x");
    const LocalSite site(server);
    const auto from = [&](const std::string& path, int depth) {
        return failureOf([&] { site.transport().downloadTree(path, depth, ignore, ignore); });
    };
    EXPECT_EQ(from("last/beyond", mostFolderLevels - 1), "");
    EXPECT_EQ(from("last", mostFolderLevels - 1), "The remote folder is nested more than 128 levels deep.");
}

} // namespace
} // namespace zembrastel
