// The servers that other tests stand on: a test is only as good as they are.
#include "support/certificates.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/relay.h"
#include "support/wait_for.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

namespace zembrastel::testing {

namespace {

using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;
using Words = std::vector<std::string>;

Words curlCommand(const FtpServer& server, const std::string& path, const Words& more = {}, std::string address = {}) {
    if (address.empty()) address = "localhost:" + std::to_string(server.port());
    const std::string scheme = server.tls() == Tls::implicitTls ? "ftps" : "ftp";
    Words command{"/usr/bin/curl", "-sS", "-m", "20", "-u", server.username() + ":" + server.password()};
    if (server.tls() == Tls::explicitTls) command.emplace_back("--ssl-reqd");
    command.push_back(scheme + "://" + address + "/%2f" + server.remoteFolder(path).substr(1));
    command.insert(command.end(), more.begin(), more.end());
    return command;
}

int curlStatus(const FtpServer& server, const std::string& path, const Words& more = {}) {
    return runProgram(curlCommand(server, path, more)).status;
}

class EveryServer : public ::testing::TestWithParam<std::tuple<Kind, Tls>> {
protected:
    void SetUp() override {
        const auto [kind, tls] = GetParam();
        if (const auto reason = FtpServer::unavailable(kind, tls)) GTEST_SKIP() << *reason;
    }

    const ScopedTrust trust{certificates().ca};
};

std::string caseName(const ::testing::TestParamInfo<std::tuple<Kind, Tls>>& instance) {
    const Words protections{"Plain", "ExplicitTls", "ImplicitTls"};
    const auto [kind, tls] = instance.param;
    return FtpServer::name(kind) + protections.at(static_cast<std::size_t>(tls));
}

using ::testing::Combine;
using ::testing::Values;
const auto everyTls = Values(Tls::none, Tls::explicitTls, Tls::implicitTls);
INSTANTIATE_TEST_SUITE_P(
    With, EveryServer, Combine(Values(Kind::proftpd, Kind::vsftpd, Kind::odd), everyTls), caseName);
INSTANTIATE_TEST_SUITE_P(
    WithoutImplicit, EveryServer, Combine(Values(Kind::pureftpd), Values(Tls::none, Tls::explicitTls)), caseName);

TEST_P(EveryServer, TakesEverySessionWithItAndServesAgainOnItsPort) {
    const auto [kind, tls] = GetParam();
    FtpServer server(kind, {.tls = tls, .rateKiB = 200});
    server.put("site/.hidden", "h");
    server.put("big", randomBytes(4 << 20)); // takes 20 s to come
    const TemporaryFolder local;
    for (const bool killed : {false, true}) {
        Program transfer(curlCommand(server, "big", {"-o", local / "big"}));
        ASSERT_TRUE(eventually([&] { return std::filesystem::remove(local / "big"); }));
        if (killed)
            ASSERT_EQ(kill(server.launcher().value(), SIGKILL), 0);
        else
            server.stop();
        std::string output;
        ASSERT_TRUE(transfer.readToEnd(output, std::chrono::seconds(10)));
        EXPECT_NE(transfer.wait(), 0);
        EXPECT_EQ(curlStatus(server, "", {"-o", "/dev/null"}), 7) << "not refused";
        server.restart();
    }
    const auto listed = runProgram(curlCommand(server, "site/")).output;
    EXPECT_NE(listed.find(".hidden"), std::string::npos) << listed;
    writeFile(local / "page", "new");
    EXPECT_EQ(
        curlStatus(server, "site/up.part", {"-T", local / "page", "-Q", "-RNFR up.part", "-Q", "-RNTO .hidden"}), 0);
    EXPECT_EQ(readTree(server.root() / "site"), (FileTree{{".hidden", "new"}}));
}

class RelayedServer : public EveryServer {};

INSTANTIATE_TEST_SUITE_P(
    With, RelayedServer,
    Combine(Values(Kind::proftpd, Kind::vsftpd, Kind::pureftpd), Values(Tls::none, Tls::explicitTls)), caseName);

TEST_P(RelayedServer, RelayCutsTheConnectionsItIsToldTo) {
    const auto [kind, tls] = GetParam();
    const auto roundTrip = std::chrono::milliseconds(tls == Tls::none ? 20 : 0);
    Relay relay(roundTrip);
    FtpServer server(kind, {.tls = tls, .passive = relay.passivePorts()});
    relay.connectTo(server);
    const TemporaryFolder local;
    const std::string bytes = randomBytes(300'000);
    writeFile(local / "sent", bytes);
    const auto curl = [&](const std::string& path, const Words& more) {
        return runProgram(curlCommand(server, path, more, relay.host() + ":" + std::to_string(relay.port())));
    };
    const auto upload = [&](const std::string& name) {
        curl(name, {"-T", local / "sent"});
        return readFile(server.root() / name);
    };

    relay.cut({.bytes = 100'000, .first = 2});
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(upload("first"), bytes);
    EXPECT_GT(std::chrono::steady_clock::now() - begin, 6 * roundTrip);
    const std::string torn = upload("second");
    EXPECT_TRUE(bytes.starts_with(torn) && torn.size() > 80'000 && torn.size() <= 100'000) << torn.size();

    constexpr int names = 60;
    const auto lines = [&] { return std::ranges::count(curl("many/", {"--list-only"}).output, '\n'); };
    for (int i = 0; i < names; ++i) server.put("many/" + std::string(200, 'x') + std::to_string(i), "");
    server.put("page", bytes);
    relay.cut({.direction = Relay::Direction::toClient, .bytes = 8'000, .times = Relay::everyTime});
    EXPECT_LT(lines(), names);
    EXPECT_LT(curl("page", {}).output.size(), 8'001U);
    EXPECT_EQ(relay.cuts(), 3U);

    relay.cutNothing();
    EXPECT_GE(lines(), names);
    EXPECT_EQ(curl("page", {}).output, bytes);
}

class TlsServer : public EveryServer {};

INSTANTIATE_TEST_SUITE_P(
    With, TlsServer,
    Combine(Values(Kind::proftpd, Kind::vsftpd, Kind::pureftpd, Kind::odd), Values(Tls::explicitTls, Tls::implicitTls)),
    caseName);

TEST_P(TlsServer, SpeaksTheOneVersionAskedForAndRequiresItsSessionsToBeReusedWhereItCan) {
    const auto [kind, tls] = GetParam();
    const Words atLeast13{"--tlsv1.3"};
    const Words atMost12{"--tls-max", "1.2"};
    for (const auto version : {FtpServer::TlsVersion::tls12, FtpServer::TlsVersion::tls13}) {
        FtpServer server(kind, {.tls = tls, .version = version});
        server.put("page", "x");
        const bool newer = version == FtpServer::TlsVersion::tls13;
        EXPECT_EQ(curlStatus(server, "page", newer ? atLeast13 : atMost12), 0);
        EXPECT_EQ(curlStatus(server, "page", newer ? atMost12 : atLeast13), 35) << "not refused";
        const bool requiresReuse = kind == Kind::proftpd || kind == Kind::vsftpd;
        EXPECT_EQ(curlStatus(server, "page", {"--no-sessionid"}) != 0, requiresReuse);
    }
}

TEST(OddServer, IsOddAsOftenAsAsked) {
    const TemporaryFolder local;
    const std::string log = local / "log";
    FtpServer server(
        Kind::odd, {.extra = {"--reply", "RETR=550 Not this one", "--only", "secret*", "--times=1", "--log", log}});
    for (const auto* name : {"secret", "open"}) server.put(name, "x");
    Words outcomes;
    for (const auto* name : {"open", "secret", "open", "secret"}) {
        outcomes.push_back(name + std::to_string(curlStatus(server, name)));
    }
    EXPECT_EQ(outcomes, (Words{"open0", "secret78", "open0", "secret0"}));
    EXPECT_TRUE(readFile(log).starts_with("USER web\nPASS *\nPWD\n"));
}

} // namespace

} // namespace zembrastel::testing
