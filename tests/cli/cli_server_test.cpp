// The executable against real servers on loopback ports.
#include "server_fixture.h"

#include "model/saved_state.h"
#include "model/state_store.h"
#include "platform/files.h"
#include "support/certificates.h"
#include "support/ftp_server.h"
#include "support/process_figures.h"
#include "support/wait_for.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;

TEST_F(CliWithServer, EditIsLiveSoonAndNothingIsLeftBehind) {
    const auto leftover = place.temporary() / ("zembrastel-" + Uuid::random().text()); // of a killed run
    std::filesystem::create_directory(leftover);
    std::filesystem::last_write_time(leftover, std::filesystem::file_time_type::clock::now() - 2h);
    place.wrapper = {"/usr/bin/env", "--ignore-signal=CHLD"}; // as a parent may have it
    Program program = startWatch();
    readUntilWatching(program);
    rlimit dump{};
    EXPECT_EQ(::prlimit(program.pid(), RLIMIT_CORE, nullptr, &dump), 0);
    EXPECT_LE(dump.rlim_max, 1U) << "it would hold the password";
    const auto status = zembrastel::readFile(processFolder(program.pid()) / "status").value();
    const auto ignored = std::stoull(status.substr(status.find("SigIgn:") + 7), nullptr, 16);
    EXPECT_EQ(ignored >> (SIGCHLD - 1) & 1U, 0U) << "it would not learn how transfers end";
    writeFile(site / "index.html", "edited");
    readUntil(program, "Uploaded index.html");
    EXPECT_EQ(readTree(serverSite), readTree(site));
    end(program);
    EXPECT_TRUE(std::filesystem::is_empty(place.temporary()));
    EXPECT_TRUE(leftoverPartFiles(serverSite).empty());
}

TEST_F(CliWithServer, ClosedPipeDoesNotEndTheSyncing) {
    // The pipe to `true` breaks at once.
    const std::string watch = place.shellCommand("watch 'My website' --password-file " + place.passwordFile().string());
    Program program(
        {"/bin/bash", "-c", watch + " > >(true) & echo $!; wait $!"}, {"TMPDIR=" + place.temporary().string()});
    const pid_t watching = std::stoi(program.readLine(limit));
    // It is sent last, and has another name until it is complete.
    const auto isLive = [this](const std::string& text) {
        return eventually([&] { return zembrastel::readFile(serverSite / "index.html") == text; }, limit);
    };
    EXPECT_TRUE(isLive("hello"));
    writeFile(site / "index.html", "edited");
    EXPECT_TRUE(isLive("edited"));
    ::kill(watching, SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(readTree(serverSite), readTree(site));
}

TEST_F(CliWithServer, NewerServerFileIsOfferedNotOverwritten) {
    Program first = startWatch();
    readUntilWatching(first);
    end(first, SIGINT);
    changeOnServer("index.html", "by another", 60s);
    writeFile(site / "images/a.svg", "edited meanwhile");

    Program program = startWatch();
    EXPECT_TRUE(contains(readUntil(program, R"("event":"review")"), R"("path":"index.html")"));
    place.expect(0, "profile list"); // others may read while it runs
    expect(3, "review");
    expect(3, "check --json", {R"("files":[{"path":"index.html")"});
    end(program, SIGINT);

    const std::string before = readFile(place.stateFile());
    expect(3, "review --list --json", {R"("bothChanged":false)"});
    expect(1, "review --download index.html typo.html", {"\"typo.html\""});
    const std::string listed = expect(3, "review --list").errors;
    const std::string keepAll =
        listed.substr(listed.rfind("--keep-all"), std::string("--keep-all --listed 12345678").size());
    changeOnServer("index.html", "by another", 90s);
    expect(3, "review " + keepAll, {"Nothing was decided"});
    EXPECT_EQ(readFile(place.stateFile()), before);
    EXPECT_EQ(readFile(serverSite / "index.html"), "by another");
    EXPECT_EQ(readFile(serverSite / "images/a.svg"), "<svg/>");
    EXPECT_EQ(readFile(site / "index.html"), "hello");
}

TEST_F(CliWithServer, CommandThatWatchNamesReviewsTheProfile) {
    changeOnServer("index.html", "by another", 60s);
    Program program = place.start("watch 'My website'");
    const std::string printed = readUntil(program, "To decide");
    end(program, SIGINT);
    EXPECT_TRUE(contains(printed, "\n    index.html\n"));
    const std::string typed = printed.substr(printed.find("terminal: ") + 10);
    const auto shell =
        runProgram({"/bin/sh", "-c", "exec 2> /dev/null; " + typed}, {"TMPDIR=" + place.temporary().string()});
    EXPECT_EQ(shell.status, 3) << typed;
    EXPECT_TRUE(contains(shell.output, "index.html  server "));
}

TEST_F(CliWithServer, ProfileIsDownloadedBeforeItsReview) {
    Profile profile = place.profile();
    profile.needsDownload = true;
    profile.initialDownloadSelection = DownloadSelection::everything();
    place.saveProfile(profile);
    for (const char* command : {"review --keep-all", "check", "push"}) {
        expect(1, command, {"still has its initial download to do; run watch or push --download-first"});
    }
}

TEST_F(CliWithServer, MissingRemoteFolderIsCreatedOnlyOnRequest) {
    Profile profile = place.profile();
    profile.remoteFolder += "/new/shop";
    place.saveProfile(profile);
    expect(1, "push", {"/new/shop does not exist on localhost.", "--create-remote-folder"});
    EXPECT_FALSE(std::filesystem::exists(serverSite / "new"));
    expect(0, "push --create-remote-folder", {"/new/shop exists now.", "Pushed"});
    EXPECT_EQ(readFile(serverSite / "new/shop/index.html"), "hello");
}

TEST_F(CliWithServer, EveryFailureSaysWhatToDoNext) {
    const Profile good = place.profile();
    const FtpServer secure(FtpServer::Kind::proftpd, {.tls = FtpServer::Tls::explicitTls}); // with an unknown issuer
    struct Case {
        std::function<void(Profile&)> spoil;
        std::string printed;
        int status = 1;
    };
    for (const auto& [spoil, printed, status] : std::vector<Case>{
             {[](Profile& profile) { profile.host = "nosuch.invalid"; },
              "The server name nosuch.invalid is not known. Check the name in the profile"},
             {[](Profile& profile) { profile.port = 1; }, "There is no answer from localhost at port 1. Check"},
             {[](Profile& profile) { profile.remoteFolder += "/nosuch"; },
              "/nosuch does not exist on localhost. Create it"},
             {[](Profile& profile) { profile.transport = TransferProtocol::ftps; },
              "The server does not encrypt. Choose"},
             {[&secure](Profile& profile) {
                  profile.port = secure.port();
                  profile.transport = TransferProtocol::ftps;
              },
              "cannot be verified. Nothing has been sent, not even the password."},
             {[this](Profile&) { place.savePassword("wrong-hush"); },
              "The server refused the username or the password. Check both in the profile, then test the connection "
              "there.",
              5}}) {
        Profile profile = good;
        spoil(profile);
        place.saveProfile(profile);
        for (const char* command : {"test", "ls", "review"}) {
            EXPECT_FALSE(contains(expect(status, command, {printed}).errors, "hush"));
        }
    }
}

// What base64 makes of a text, wherever in a longer one it stands: the part that its neighbours do not change.
Texts base64Forms(const std::string& text) {
    Texts forms;
    for (std::size_t skipped = 0; skipped < 3; ++skipped) {
        const std::string triples = text.substr(skipped, (text.size() - skipped) / 3 * 3);
        forms.push_back(runProgram({"/bin/sh", "-c", "printf %s \"$0\" | base64 -w 0", triples}).output);
    }
    return forms;
}

// The arguments and variables of a process and all below it.
std::string processTexts(pid_t process) {
    std::string texts;
    try {
        for (const char* name : {"cmdline", "environ"})
            texts += zembrastel::readFile(processFolder(process) / name).value_or("");
        for (const pid_t child : childrenOf(process)) texts += processTexts(child);
    } catch (const std::exception&) {
        // It has ended meanwhile.
    }
    return texts;
}

// The server repeats it in every reply, to a login that it takes and to one that it refuses, with TLS and without.
TEST_F(CliWithServer, PasswordIsNowhereToBeSeenWhateverTheServerRepeats) {
    // This survives quoting and percent-encoding, so it is all that need be looked for.
    const std::string core = "hush" + std::to_string(::getpid()) + "z7f3a";
    const std::string password = R"(p"a\b%41:c@ é')" + core + R"( \")";
    place.savePassword(password);
    place.variables = {"CURL_CA_BUNDLE=" + certificates().ca.string()};
    auto forms = base64Forms(core);
    forms.push_back(core);
    for (const auto tls : {FtpServer::Tls::none, FtpServer::Tls::explicitTls}) {
        for (const bool taken : {true, false}) {
            SCOPED_TRACE(
                (tls == FtpServer::Tls::none ? "plain, " : "TLS, ") + std::string(taken ? "taken" : "refused"));
            Texts ways{"--echo", "--delay=0.05", "--password=" + password};
            if (!taken) ways.emplace_back("--reply=PASS=530 Not so.");
            FtpServer talkative(FtpServer::Kind::odd, {.tls = tls, .rateKiB = 16, .extra = ways});
            std::filesystem::create_directory(talkative.root() / "site");
            saveProfile(talkative, talkative.remoteFolder("site"));
            writeFile(site / "a large file", randomBytes(4 << 20));

            place.password = tls == FtpServer::Tls::none
                                 ? Texts{"--password-file", place.passwordFile().string()}
                                 : Texts{"--password-command", "cat " + place.passwordFile().string()};
            Program program = place.start(taken ? "watch 'My website' --json" : "watch 'My website'");
            std::string seen;
            const auto curlRuns = [&] {
                seen += processTexts(program.pid());
                return seen.find("--config") != std::string::npos;
            };
            ASSERT_TRUE(eventually(curlRuns, limit));
            const std::string printed = readUntil(program, taken ? R"("detail":"a large file")" : "Access denied: 530");
            if (taken) {
                ASSERT_TRUE(eventually([&] { return !leftoverPartFiles(talkative.root()).empty(); }, limit));
                seen += processTexts(program.pid());
            }
            FileTree files = readTree(place.path(""));
            const bool staged =
                std::ranges::any_of(files, [](const auto& file) { return file.first.ends_with("/upload"); });
            EXPECT_EQ(staged, taken);
            end(program, SIGINT);
            ASSERT_TRUE(program.readToEnd(files["the rest of the output"], limit));
            files["the output"] = printed;
            files["arguments and variables"] = seen;
            for (const auto& [path, text] : readTree(place.path(""))) files[path + " in the end"] = text;
            std::erase_if(files, [](const auto& file) { return file.first.starts_with("password"); });
            for (const auto& [path, text] : files) {
                for (const auto& form : forms) EXPECT_EQ(text.find(form), std::string::npos) << path << ": " << form;
            }
        }
    }
}

} // namespace
} // namespace zembrastel::testing
