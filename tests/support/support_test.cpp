// The servers and clocks that other tests stand on: a test is only as good as they are.
#include "support/certificates.h"
#include "support/fake_clock.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/program.h"
#include "support/wait_for.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <fstream>
#include <thread>

namespace zembrastel::testing {

namespace {

using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;

std::vector<std::string> curlCommand(const FtpServer& server, const std::string& remotePath) {
    const std::string scheme = server.tls() == Tls::implicitTls ? "ftps" : "ftp";
    std::vector<std::string> command{
        "/usr/bin/curl", "-sS", "-m", "20", "-u", server.username() + ":" + server.password()};
    if (server.tls() == Tls::explicitTls) command.emplace_back("--ssl-reqd");
    command.push_back(scheme + "://localhost:" + std::to_string(server.port()) + "/%2f" + remotePath.substr(1));
    return command;
}

ProgramResult curl(const FtpServer& server, const std::string& remotePath, const std::vector<std::string>& more = {}) {
    std::vector<std::string> command = curlCommand(server, remotePath);
    command.insert(command.end(), more.begin(), more.end());
    return runProgram(command);
}

// The third and fourth word of /proc/PID/stat: its state and its parent. The name before them may hold anything.
std::pair<char, pid_t> stateAndParent(const std::filesystem::path& process) {
    std::string text;
    std::getline(std::ifstream(process / "stat"), text, '\0');
    const std::size_t name = text.rfind(") ");
    if (name == std::string::npos) return {'X', 0}; // gone meanwhile
    return {text[name + 2], std::stoi(text.substr(name + 4))};
}

bool isRunning(pid_t process) {
    const char state = stateAndParent("/proc/" + std::to_string(process)).first;
    return state != 'X' && state != 'Z';
}

std::vector<pid_t> processesBelow(pid_t ancestor) {
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        if (stateAndParent(entry.path()).second != ancestor) continue;
        const pid_t process = std::stoi(name);
        found.push_back(process);
        for (const pid_t below : processesBelow(process)) found.push_back(below);
    }
    return found;
}

class EveryServer : public ::testing::TestWithParam<std::tuple<Kind, Tls>> {
protected:
    void SetUp() override {
        const auto [kind, tls] = GetParam();
        if (const auto reason = FtpServer::unavailable(kind, tls)) GTEST_SKIP() << *reason;
    }

    static FtpServer::Options slow() { return {.tls = std::get<Tls>(GetParam()), .rateKiB = 200}; }

    // The command that downloads a file which takes 20 s to come.
    static std::vector<std::string> longDownload(FtpServer& server, const std::filesystem::path& target) {
        server.put("big", randomBytes(4 << 20));
        std::vector<std::string> command = curlCommand(server, server.remoteFolder("big"));
        command.insert(command.end(), {"-o", target});
        return command;
    }

    const ScopedTrust trust{certificates().ca};
};

class RealServer : public EveryServer {};

std::vector<std::tuple<Kind, Tls>> everyWay(const std::vector<Kind>& kinds) {
    std::vector<std::tuple<Kind, Tls>> ways;
    for (const Kind kind : kinds) {
        for (const Tls tls : {Tls::none, Tls::explicitTls, Tls::implicitTls}) {
            if (kind != Kind::pureftpd || tls != Tls::implicitTls) ways.emplace_back(kind, tls); // it has none
        }
    }
    return ways;
}

std::string caseName(const ::testing::TestParamInfo<std::tuple<Kind, Tls>>& instance) {
    const std::vector<std::string> kinds{"proftpd", "vsftpd", "pureftpd", "odd"};
    const std::vector<std::string> protections{"Plain", "ExplicitTls", "ImplicitTls"};
    const auto [kind, tls] = instance.param;
    return kinds.at(static_cast<std::size_t>(kind)) + protections.at(static_cast<std::size_t>(tls));
}

const std::vector<Kind> realServers{Kind::proftpd, Kind::vsftpd, Kind::pureftpd};
INSTANTIATE_TEST_SUITE_P(Real, EveryServer, ::testing::ValuesIn(everyWay(realServers)), caseName);
INSTANTIATE_TEST_SUITE_P(Odd, EveryServer, ::testing::ValuesIn(everyWay({Kind::odd})), caseName);
INSTANTIATE_TEST_SUITE_P(Real, RealServer, ::testing::ValuesIn(everyWay(realServers)), caseName);

TEST_P(EveryServer, ServesItsFolderAndStartsAgainOnItsPort) {
    const auto [kind, tls] = GetParam();
    FtpServer server(kind, {.tls = tls});
    server.put("site/old/.hidden", "h");
    const std::uint16_t port = server.port();
    const std::string listed = curl(server, server.remoteFolder("site/old") + "/").output;
    EXPECT_NE(listed.find(".hidden"), std::string::npos) << listed;

    server.stop();
    EXPECT_EQ(curl(server, server.remoteFolder() + "/", {"-o", "/dev/null"}).status, 7); // refused
    server.restart();
    EXPECT_EQ(server.port(), port);

    TemporaryFolder local;
    writeFile(local / "page", "new");
    const auto sent = curl(
        server, server.remoteFolder("site/old/up.part"),
        {"-T", (local / "page").string(), "-Q", "-RNFR up.part", "-Q", "-RNTO .hidden"});
    EXPECT_EQ(sent.status, 0);
    EXPECT_EQ(readTree(server.root()), (FileTree{{"site/old/.hidden", "new"}}));
}

TEST_P(EveryServer, StoppingBreaksOffATransferUnderWay) {
    FtpServer server(std::get<Kind>(GetParam()), slow());
    TemporaryFolder local;
    Program transfer(longDownload(server, local / "big"));
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(local / "big"); }));

    server.stop();
    std::string output;
    ASSERT_TRUE(transfer.readToEnd(output, std::chrono::seconds(10)));
    EXPECT_NE(transfer.wait(), 0);
}

TEST_P(RealServer, AKilledLauncherLeavesNoSessionBehind) {
    FtpServer server(std::get<Kind>(GetParam()), slow());
    TemporaryFolder local;
    const Program transfer(longDownload(server, local / "big"));
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(local / "big"); }));
    const pid_t launcher = server.launcher().value();
    const std::vector<pid_t> below = processesBelow(launcher);
    ASSERT_GE(below.size(), 2U); // the listener and a session

    ASSERT_EQ(kill(launcher, SIGKILL), 0);
    EXPECT_TRUE(eventually([&] { return std::ranges::none_of(below, isRunning); }));
}

TEST(ScopedTrust, ShowsAClientWhatIsWrongWithACertificate) {
    const auto statusFor = [](const std::filesystem::path& certificate, const std::filesystem::path& authority) {
        const ScopedTrust trust(authority);
        const FtpServer server(Kind::odd, {.tls = Tls::explicitTls, .certificate = certificate});
        return curl(server, "/").status;
    };
    EXPECT_EQ(statusFor(certificates().server, certificates().ca), 0);
    EXPECT_EQ(statusFor(certificates().server, certificates().otherCa), 60);
    EXPECT_EQ(statusFor(certificates().wrongHost, certificates().ca), 60);
    EXPECT_EQ(statusFor(certificates().expired, certificates().ca), 60);
}

TEST(OddServer, IsOddAsOftenAsAsked) {
    TemporaryFolder local;
    FtpServer server(
        Kind::odd, {.extra = {
                        "--reply", "RETR=550 Not this one", "--only", "secret*", "--skip=1", "--times=1", "--log",
                        (local / "log").string()}});
    server.put("secret.txt", "s");
    server.put("open.txt", "o");
    EXPECT_EQ(curl(server, "/secret.txt").status, 0);
    EXPECT_EQ(curl(server, "/open.txt").status, 0);
    EXPECT_EQ(curl(server, "/secret.txt", {"-s"}).status, 78);
    EXPECT_EQ(curl(server, "/secret.txt").status, 0);
    EXPECT_TRUE(readFile(local / "log").starts_with("USER web\nPASS *\nPWD\n"));
}

TEST(FakeClock, ALoopRunsAsManyRoundsAsTheTestLets) {
    FakeClock clock;
    std::atomic<int> rounds = 0;
    clock.onSleep = [&](std::chrono::nanoseconds) { return ++rounds < 3; };
    const auto before = clock.steadyNow();
    bool last = true;
    std::jthread loop([&](const std::stop_token& stop) {
        while ((last = clock.sleep(stop, std::chrono::hours(1)))) {
        }
    });
    ASSERT_TRUE(eventually([&] { return rounds == 3; }));
    loop.request_stop();
    loop.join();
    EXPECT_FALSE(last);
    EXPECT_EQ(clock.sleeps(), std::vector<std::chrono::nanoseconds>(3, std::chrono::hours(1)));
    EXPECT_EQ(clock.steadyNow() - before, std::chrono::hours(2));
}

TEST(FileTree, TellsFoldersApartByEveryByteAndFindsLeftovers) {
    TemporaryFolder folder;
    writeTree(folder / "a", {{"x/.h", std::string("\0\n", 2)}, {"x/.zembrastel-1.part", ""}});
    EXPECT_EQ(readTree(folder / "a"), (FileTree{{"x/.h", std::string("\0\n", 2)}, {"x/.zembrastel-1.part", ""}}));
    EXPECT_EQ(leftoverPartFiles(folder / "a"), (std::vector<std::string>{"x/.zembrastel-1.part"}));
    const auto modified = std::chrono::sys_days{std::chrono::year{1999} / 12 / 31} + std::chrono::nanoseconds(7);
    touch(folder / "a/x/.h", modified);
    const auto read = std::chrono::file_clock::to_sys(std::filesystem::last_write_time(folder / "a/x/.h"));
    EXPECT_EQ(read, modified);
}

} // namespace

} // namespace zembrastel::testing
