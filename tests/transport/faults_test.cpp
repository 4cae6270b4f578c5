// Faults of servers, networks and other programs, which must leave both sides unharmed.
#include "model/error.h"
#include "platform/files.h"
#include "platform/text.h"
#include "support/certificates.h"
#include "support/local_site.h"
#include "support/process_figures.h"
#include "support/wait_for.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
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

// For unused reports.
const auto ignore = [](const auto&...) {};

FtpServer oddServer(Words arguments = {}) { return FtpServer(FtpServer::Kind::odd, {.extra = std::move(arguments)}); }

Words namesIn(const std::vector<RemoteEntry>& entries) {
    Words names;
    for (const auto& entry : entries) names.push_back(entry.name + (entry.directory ? "/" : ""));
    std::sort(names.begin(), names.end());
    return names;
}

TEST(ListingFaults, UnclearEntriesAreNotListed) {
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

TEST(ListingFaults, EndlessListingIsRefused) {
    const testing::TemporaryFolder folder;
    testing::writeFile(folder / "listing", "type=file;size=7; x\r\n");
    const auto server = oddServer({"--endless", "--listing", folder / "listing"});
    EXPECT_EQ(
        failureOf([&] { return LocalSite(server).transport().list(""); }),
        "The server's directory listing is too long.");
}

TEST(ListingFaults, MissingDateIsNeverInvented) {
    const std::string missing =
        "The server did not provide a modification date for a. Uploads remain paused until you choose how to proceed.";
    for (const Words& oddity : {Words{"--no", "MDTM"}, Words{"--reply", "MDTM=213 garbage"}}) {
        FtpServer server = oddServer(oddity);
        server.put("site/a", "x");
        EXPECT_EQ(failureOf([&] { return LocalSite(server).transport().modificationDate("a"); }), missing);
    }
}

// Attacks on TLS by a network attacker, and the messages for the user.
TEST(ConnectionFaults, NothingIsSentWithoutTrustedTls) {
    using Tls = FtpServer::Tls;
    const auto& certificates = testing::certificates();
    struct Tampering {
        Tls tls;
        Words how = {};
        std::string message;
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
         .message = "curl: (64) Requested SSL level failed",
         .loggedIn = true},
        {.tls = Tls::explicitTls, .message = unknownIssuer, .trusted = certificates.otherCa},
        {.tls = Tls::implicitTls, .message = unknownIssuer, .trusted = certificates.otherCa},
        {.tls = Tls::implicitTls, .message = "curl: (60) SSL", .certificate = certificates.wrongHost},
        {.tls = Tls::implicitTls,
         .message = "curl: (60) SSL certificate problem: certificate has expired",
         .certificate = certificates.expired},
    };
    for (const auto& [tls, how, message, trusted, certificate, loggedIn] : cases) {
        SCOPED_TRACE(::testing::PrintToString(how) + message);
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
            EXPECT_TRUE(failure.starts_with(message)) << failure;
        }
        const std::string sent = readFile(logs / "log").value_or("");
        EXPECT_EQ(sent.find("PASS") != std::string::npos, loggedIn) << sent;
        EXPECT_EQ(sent.find("USER") != std::string::npos, loggedIn) << sent;
        EXPECT_EQ(sent.find("STOR"), std::string::npos) << sent;
        EXPECT_TRUE(testing::readTree(server.root()).empty());
    }
}

TEST(ConnectionFaults, PasswordIsMaskedInMessages) {
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

// The children of this process that run curl.
std::vector<fs::path> runningCurls() {
    std::vector<fs::path> found;
    for (const pid_t child : testing::childrenOf(::getpid())) {
        const auto stat = readFile(testing::processFolder(child) / "stat").value_or("");
        if (stat.find("(curl) ") != std::string::npos && stat.find("(curl) Z") == std::string::npos) {
            found.push_back(testing::processFolder(child));
        }
    }
    return found;
}

Words wordsOf(const fs::path& file) {
    const auto bytes = readFile(file).value_or("");
    Words words;
    for (const auto word : splitNonEmpty(bytes, '\0')) words.emplace_back(word);
    return words;
}

// What another program of the user can see of a running curl, and settings of the user that must not affect it.
TEST(Cancelling, NoPasswordOrProcessIsLeft) {
    testing::TemporaryFolder temporary;
    ::setenv("TMPDIR", temporary.path().c_str(), 1);
    ::setenv("SSLKEYLOGFILE", (temporary / "keys").c_str(), 1);
    const testing::TemporaryFolder logs;
    FtpServer server = oddServer({"--hang", "STOR", "--echo", "--log", logs / "log"});
    server.put("site/page", "old");
    const LocalSite site(server, {{"page", "new"}});
    const auto transport = site.transport();
    auto upload = std::async(std::launch::async, [&] { transport.upload("page", site.fingerprint("page")); });
    EXPECT_TRUE(
        testing::eventually([&] { return readFile(logs / "log").value_or("").find("STOR") != std::string::npos; }));
    const auto curls = runningCurls();
    ASSERT_EQ(curls.size(), 1U);
    // Without --disable curl would read the user's .curlrc.
    EXPECT_EQ(wordsOf(curls.front() / "cmdline"), (Words{"/usr/bin/curl", "--disable", "--config", "-"}));
    const auto environment = wordsOf(curls.front() / "environ");
    EXPECT_TRUE(std::ranges::none_of(environment, [](const auto& variable) {
        return variable.starts_with("SSLKEYLOGFILE=") || variable.find("s3cret") != std::string::npos;
    }));
    EXPECT_NE(std::ranges::find(environment, "TMPDIR=" + temporary.path().string()), environment.end());
    for (const auto& [path, content] : testing::readTree(temporary.path())) {
        EXPECT_EQ(content.find("s3cret"), std::string::npos) << path;
    }
    const auto stopped = std::chrono::steady_clock::now();
    transport.control->cancel();
    EXPECT_THROW(upload.get(), Cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - stopped, testing::atOnce);
    EXPECT_TRUE(runningCurls().empty());
    for (const auto& item : fs::directory_iterator(temporary.path())) {
        EXPECT_TRUE(item.path().filename().string().starts_with("zembrastel-test-")) << item.path() << " is left";
    }
    EXPECT_EQ(testing::readFile(server.root() / "site/page"), "old");
    EXPECT_THROW((void)transport.test(), Cancelled) << "a stopped control starts nothing";
    ::unsetenv("SSLKEYLOGFILE");
    ::unsetenv("TMPDIR");
}

class ReplaceGuards : public ::testing::Test {
protected:
    ReplaceGuards() {
        server.put("site/page", testing::randomBytes(250'000));
        testing::touch(server.root() / "site/page", moment + std::chrono::hours(1));
        testing::touch(site / "page", moment);
    }

    RemoteChange change() const {
        return {"page", site.fingerprint("page"), toRemoteDate(moment + std::chrono::hours(1))};
    }

    // The server holds the download until the edit is made.
    std::string replaceWhile(const std::function<void()>& edit) {
        testing::writeFile(hold, "");
        std::jthread editor([&] {
            EXPECT_TRUE(testing::eventually([&] {
                const auto parts = testing::leftoverPartFiles(site.root());
                return !parts.empty() && fs::file_size(site / parts.front()) > 0;
            }));
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

TEST_F(ReplaceGuards, EditOnEitherSideIsNeverLost) {
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

TEST(LocalFaults, LinksAreNeverFollowed) {
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

TEST(LocalFaults, DownloadKeepsPasswordsAndStateFolder) {
    FtpServer server = oddServer();
    const LocalSite site(server, {{"password", "mine"}, {"state/profiles.json", "mine"}});
    testing::touch(site / "password", std::chrono::sys_days(std::chrono::year(2020) / 1 / 1));
    for (const char* path : {"password", "planned", "state/profiles.json", "state/more", "page"}) {
        server.put(std::string("site/") + path, "the server's");
    }
    auto transport = site.transport();
    for (const char* path : {"password", "planned", "state"}) {
        transport.privateItems.push_back({.path = site / path, .reason = "it is private"});
    }
    Words lines;
    transport.downloadTree(
        "", 0, [&](const std::string& line) { lines.push_back(line); }, ignore);
    EXPECT_EQ(
        site.files(), (FileTree{{"page", "the server's"}, {"password", "mine"}, {"state/profiles.json", "mine"}}));
    EXPECT_EQ(std::ranges::count(lines, "Left out, because it is private: planned"), 1);
    EXPECT_EQ(lines.size(), 4U) << "and Downloading page";
}

TEST(LocalFaults, OnlyTheRequestedVersionIsSent) {
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

// The report of a first download; the last line is its failure, if any.
Words downloadLines(const LocalSite& site, const std::string& path = "", int depth = 0) {
    Words lines;
    const auto failure = failureOf([&] {
        site.transport().downloadTree(
            path, depth, [&](const std::string& line) { lines.push_back(line); }, ignore);
    });
    if (!failure.empty()) lines.push_back(failure);
    return lines;
}

TEST(ListingFaults, CutListingIsNeverTakenForWhole) {
    const std::string cut =
        "The server sent only a part of the directory listing of the remote folder. None of it is used.";
    struct Case {
        Words oddity;
        std::string failure = {};
        bool dated = true;
    };
    for (const auto& [oddity, failure, dated] : std::vector<Case>{
             {{"--times=2"}},
             {{"--times=3"}, "", false},
             {{"--times=1", "--no=MLSD"}, "", false},
             {{"--times=2", "--no=MLSD"}, cut},
             {{}, cut},
         }) {
        auto arguments = oddity;
        arguments.emplace_back("--cut");
        FtpServer server = oddServer(arguments);
        for (int i = 0; i < 3; ++i) server.put("site/page" + std::to_string(i), "x");
        std::vector<RemoteEntry> entries;
        EXPECT_EQ(failureOf([&] { entries = LocalSite(server).transport().list(""); }), failure);
        EXPECT_EQ(entries.size(), failure.empty() ? 3U : 0U);
        for (const auto& entry : entries) EXPECT_EQ(entry.modified.has_value(), dated);
    }
}

TEST(DownloadFaults, FileOfAnotherSizeIsNotInstalled) {
    const testing::TemporaryFolder folder;
    testing::writeFile(folder / "listing", "type=file;size=3; page\r\n");
    const std::string large(100'000, 'x');
    testing::writeFile(folder / "short", "12");
    testing::writeFile(folder / "large", large);
    const auto refusal = [](const std::string& sent) {
        return "page was not downloaded: the server reported a size of 5 bytes and sent " + sent + ".";
    };
    struct Case {
        Words oddity;
        std::string failure = {};
    };
    for (const auto& [oddity, failure] : std::vector<Case>{
             {{"--listing", folder / "listing"}}, // wrong; the size of the file itself is right
             {{"--no=SIZE", "--every-file", folder / "short"}, refusal("2")},
             {{"--no=SIZE", "--every-file", folder / "large"}, refusal("more")},
             {{"--no=SIZE", "--every-file", folder / "large", "--endless"}, refusal("more")},
         }) {
        FtpServer server = oddServer(oddity);
        const bool wrongListing = failure.empty();
        const std::string path = wrongListing ? "page" : "site/page"; // the listing of every folder
        server.put(path, wrongListing ? large : "12345");
        const LocalSite site(server);
        auto expected = Words{"Downloading page"};
        if (!failure.empty()) expected.push_back(failure);
        EXPECT_EQ(downloadLines(site), expected);
        EXPECT_EQ(site.files(), wrongListing ? FileTree({{"page", large}}) : FileTree());
    }
}

TEST(DownloadFaults, FolderThatLeadsBackIsSkipped) {
    for (const auto kind : {FtpServer::Kind::odd, FtpServer::Kind::pureftpd}) {
        if (FtpServer::unavailable(kind, FtpServer::Tls::none)) continue;
        // Both servers then list a link as a folder.
        FtpServer server(kind, {.extra = {kind == FtpServer::Kind::odd ? "--reply=LIST=550 denied" : "-b"}});
        const FileTree tree{{"page", "x"}, {"sub/deep/page", "y"}, {"sub/sub/deep/page", "y"}, {"sub/sub/sub/x", "z"}};
        for (const auto& [path, content] : tree) server.put("site/" + path, content);
        fs::create_directory_symlink(".", server.root() / "site/loop");
        fs::create_directory_symlink("../..", server.root() / "site/sub/deep/up");
        const LocalSite site(server);
        auto lines = downloadLines(site);
        std::erase_if(lines, [](const std::string& line) { return !line.starts_with("Left out"); });
        std::ranges::sort(lines);
        const std::string leadsBack = "Left out, because on the server it leads back to a folder above it: ";
        EXPECT_EQ(lines, (Words{leadsBack + "loop", leadsBack + "sub/deep/up"})) << FtpServer::name(kind);
        EXPECT_EQ(site.files(), tree);
        EXPECT_FALSE(fs::exists(site / "loop"));
    }
}

TEST(DownloadFaults, UntransferableNameDoesNotStopTheRest) {
    const testing::TemporaryFolder folder;
    const std::string longName(390, 'n');
    std::string listing;
    for (const auto& name : Words{"tab\tx", longName, "page"}) listing += "type=file;size=5; " + name + "\r\n";
    testing::writeFile(folder / "listing", listing);
    FtpServer server = oddServer({"--listing", folder / "listing"});
    server.put("page", "12345"); // the listing of every folder
    const LocalSite site(server);
    EXPECT_EQ(
        downloadLines(site),
        (Words{
            "Left out, because its name has a control character or a line break: tab\\x09x",
            "Left out, because its name is longer than 255 bytes: " + longName, "Downloading page"}));

    FtpServer deep = oddServer();
    deep.put("site/last/beyond/page", "x");
    deep.put("site/last/z", "x");
    const LocalSite other(deep);
    EXPECT_EQ(
        downloadLines(other, "last", maxFolderLevels - 1),
        (Words{"Left out, because it is nested more than 128 levels deep: last/beyond", "Downloading last/z"}));
    EXPECT_EQ(
        downloadLines(other, "last", maxFolderLevels),
        (Words{"The remote folder is nested more than 128 levels deep."}));
}

TEST(AlikeNames, NewerFileWithAlikeNameIsOffered) {
    const std::string composed = "caf\u00E9/\u00C9t\u00E9.html";
    const std::string decomposed = "Cafe\u0301/e\u0301te\u0301.HTML";
    for (const bool folds : {true, false}) {
        FtpServer server = oddServer(folds ? Words{"--fold"} : Words{});
        LocalSite site(server, {{decomposed, "mine"}, {"sub/Page", "mine"}, {"Both", "mine"}, {"both", "mine"}});
        for (const auto& path : {composed, std::string("sub/page"), std::string("both")}) {
            server.put("site/" + path, "theirs");
        }
        for (const auto& [path, content] : site.files()) testing::touch(site / path, moment);
        const auto transport = site.transport();
        const auto changes = transport.newerRemoteFiles({}, ignore).changes;
        Words offered;
        for (const auto& change : changes) offered.push_back(change.path);
        EXPECT_EQ(offered, folds ? (Words{"both", decomposed, "sub/Page"}) : Words{"both"});
        for (const auto& change : changes) (void)transport.replaceLocal(change);

        // A first download fetches no file again, unless the server distinguishes the names.
        (void)downloadLines(site);
        FileTree expected{{decomposed, "theirs"}, {"sub/Page", "theirs"}, {"Both", "mine"}, {"both", "theirs"}};
        if (!folds)
            expected = {{decomposed, "mine"}, {"sub/Page", "mine"}, {"Both", "mine"},
                        {"both", "theirs"},   {composed, "theirs"}, {"sub/page", "theirs"}};
        EXPECT_EQ(site.files(), expected);

        // An upload replaces exactly what was offered.
        testing::writeFile(site / "sub/Page", "edited");
        transport.upload("sub/Page", site.fingerprint("sub/Page"));
        EXPECT_EQ(testing::readFile(server.root() / "site/sub/page"), folds ? "edited" : "theirs");
    }
}

} // namespace
} // namespace zembrastel
