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

TEST_F(CliWithServer, ReaderWhoGoesAwayDoesNotEndTheSyncing) {
    // The pipe to `true` breaks at once.
    const CliPlace::Arguments watch = withPassword({"--state", place.state().string(), "watch", "My website"});
    CliPlace::Arguments command{"/bin/bash", "-c", R"( "$@" > >(true) & echo $!; wait $! )", "bash", ZEMBRASTEL_CLI};
    command.insert(command.end(), watch.begin(), watch.end());
    Program program(command, {"TMPDIR=" + place.temporary().string()});
    const pid_t watching = std::stoi(program.readLine(limit));
    // The last of the two to be sent, and under another name until all of it is there.
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

TEST_F(CliWithServer, NewerServerFileIsOfferedAndNeitherSideOverwritten) {
    Program first = startWatch();
    readUntilWatching(first);
    end(first, SIGINT);
    changeOnServer("index.html", "by somebody else", 60s);
    writeFile(site / "images/a.svg", "edited meanwhile");

    Program program = startWatch();
    const std::string told = readUntil(program, R"("event":"review")");
    EXPECT_TRUE(contains(told, R"("path":"index.html")"));
    EXPECT_EQ(place.run({"profile", "list"}).status, 0);         // it goes on running, and others may look
    EXPECT_EQ(run({"review", "My website"}).status, 3);          // that of the program which runs
    const auto checked = run({"check", "My website", "--json"}); // looks on
    EXPECT_EQ(checked.status, 3) << checked.errors;
    EXPECT_TRUE(contains(checked.output, R"("files":[{"path":"index.html")"));
    end(program, SIGINT);

    const std::string before = readFile(place.stateFile());
    const auto listed = run({"review", "My website", "--list", "--json"});
    EXPECT_EQ(listed.status, 3) << listed.errors;
    EXPECT_TRUE(contains(listed.output, R"("bothChanged":false)"));
    EXPECT_EQ(readFile(place.stateFile()), before);
    EXPECT_EQ(readFile(serverSite / "index.html"), "by somebody else");
    EXPECT_EQ(readFile(serverSite / "images/a.svg"), "<svg/>");
    EXPECT_EQ(readFile(site / "index.html"), "hello");
}

TEST_F(CliWithServer, WatchSaysInWordsWhatToTypeForAReview) {
    changeOnServer("index.html", "by somebody else", 60s);
    Program program = place.start(withPassword({"watch", "My website"}));
    const std::string told = readUntil(program, "To decide");
    end(program, SIGINT);
    EXPECT_TRUE(contains(told, "\n    index.html\n"));
    const std::string typed = told.substr(told.find("terminal: ") + 10);
    const auto shell =
        runProgram({"/bin/sh", "-c", "exec 2> /dev/null; " + typed}, {"TMPDIR=" + place.temporary().string()});
    EXPECT_EQ(shell.status, 3) << typed;
    EXPECT_TRUE(contains(shell.output, "index.html  server "));
}

TEST_F(CliWithServer, KeptRevisionIsNeverOfferedAgainButALaterOneIs) {
    changeOnServer("index.html", "by somebody else", 60s);
    const auto kept = run({"review", "My website", "--keep-all"});
    EXPECT_EQ(kept.status, 0) << kept.errors;
    EXPECT_TRUE(contains(kept.output, "Kept local copy: index.html"));
    EXPECT_EQ(readFile(serverSite / "index.html"), "by somebody else"); // nothing was uploaded
    EXPECT_EQ(run({"review", "My website", "--list"}).status, 0);
    changeOnServer("index.html", "once more", 120s);
    EXPECT_EQ(run({"review", "My website", "--list"}).status, 3);
}

TEST_F(CliWithServer, DecisionOnAFileThatIsNotOfferedDecidesNothing) {
    changeOnServer("index.html", "by somebody else", 60s);
    const std::string before = readFile(place.stateFile());
    const auto result = run({"review", "My website", "--download", "index.html", "typo.html"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "\"typo.html\""));
    EXPECT_TRUE(isOneLine(result.errors));
    EXPECT_EQ(readFile(place.stateFile()), before);
    EXPECT_EQ(readFile(site / "index.html"), "hello");
}

TEST_F(CliWithServer, ReviewOfAProfileThatWasNeverDownloadedIsRefused) {
    Profile profile = place.saved().profiles.front();
    profile.needsDownload = true;
    profile.initialDownloadSelection = DownloadSelection::everything();
    place.saveProfile(profile);
    const auto result = run({"review", "My website", "--keep-all"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "still has its initial download to do; run watch first"));
}

TEST_F(CliWithServer, RefusedLoginHasItsOwnCodeInEveryCommandThatEnds) {
    for (const CliPlace::Arguments& arguments :
         {CliPlace::Arguments{"test", "My website"}, {"ls", "My website"}, {"review", "My website"}}) {
        auto all = arguments;
        all.insert(all.end(), {"--password-command", "echo wrong-hush"});
        const auto result = place.run(all);
        EXPECT_EQ(result.status, 5);
        EXPECT_TRUE(contains(result.errors, "curl: (67) Access denied: 530. Check the user name and the password."));
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        EXPECT_FALSE(contains(result.errors + result.output, "hush"));
    }
}

TEST_F(CliWithServer, EveryFailureIsOneLineWithCurlsWords) {
    const Profile good = place.saved().profiles.front();
    const FtpServer secure(FtpServer::Kind::proftpd, {.tls = FtpServer::Tls::explicitTls}); // whom nobody knows
    struct Failure {
        std::function<void(Profile&)> spoil;
        std::string words;
    };
    const std::vector<Failure> failures{
        {[](Profile& profile) { profile.host = "nosuch.invalid"; }, "curl: (6) Could not resolve host: nosuch.invalid"},
        {[](Profile& profile) { profile.port = 1; }, "curl: (7) Failed to connect"},
        {[](Profile& profile) { profile.remoteFolder += "/nosuch"; }, "curl: (9) Server denied you to change"},
        {[](Profile& profile) { profile.transport = TransferProtocol::ftps; }, "curl: (64) Requested SSL level failed"},
        {[&secure](Profile& profile) {
             profile.port = secure.port();
             profile.transport = TransferProtocol::ftps;
         },
         "curl: (60) SSL certificate problem: "}};
    for (const auto& [spoil, words] : failures) {
        Profile profile = good;
        spoil(profile);
        place.saveProfile(profile);
        for (const std::string command : {"test", "ls", "review"}) {
            const auto result = run({command, "My website"});
            EXPECT_EQ(result.status, 1) << words;
            EXPECT_TRUE(contains(result.errors, words));
            EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        }
    }
}

// What base64 makes of a text, wherever in a longer one it stands: the part that its neighbours do not change.
std::vector<std::string> base64Forms(const std::string& text) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<std::string> forms;
    for (std::size_t skipped = 0; skipped < 3; ++skipped) {
        std::string& form = forms.emplace_back();
        for (std::size_t at = skipped; at + 3 <= text.size(); at += 3) {
            unsigned bits = 0;
            for (const char byte : text.substr(at, 3)) bits = bits << 8 | static_cast<unsigned char>(byte);
            for (const int shift : {18, 12, 6, 0}) form += digits[bits >> shift & 63];
        }
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
            CliPlace::Arguments ways{"--echo", "--delay=0.05", "--password=" + password};
            if (!taken) ways.emplace_back("--reply=PASS=530 Not so.");
            FtpServer talkative(FtpServer::Kind::odd, {.tls = tls, .rateKiB = 16, .extra = ways});
            std::filesystem::create_directory(talkative.root() / "site");
            saveProfile(talkative, talkative.remoteFolder("site"));
            writeFile(site / "a large file", randomBytes(4 << 20));

            CliPlace::Arguments watch{"watch", "My website"};
            if (taken) watch.emplace_back("--json");
            const auto source = tls == FtpServer::Tls::none
                                    ? CliPlace::Arguments{"--password-file", place.passwordFile().string()}
                                    : CliPlace::Arguments{"--password-command", "cat " + place.passwordFile().string()};
            watch.insert(watch.end(), source.begin(), source.end());
            Program program = place.start(watch);
            std::string seen;
            const auto curlRuns = [&] {
                seen += processTexts(program.pid());
                return seen.find("--config") != std::string::npos;
            };
            ASSERT_TRUE(eventually(curlRuns, limit));
            const std::string told = readUntil(program, taken ? R"("detail":"a large file")" : "Access denied: 530");
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
            files["the output"] = told;
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
