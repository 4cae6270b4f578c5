// Data connections that end early with a plain end of the stream, as bad lines and middleboxes end them: the data looks
// complete to a client that only waits for the end.
#include "support/certificates.h"
#include "support/local_site.h"
#include "support/relay.h"
#include "transport/ftp_transport.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {
namespace {

using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;
using testing::Relay;
using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);
const auto ignore = [](const auto&...) {};

class EarlyEnd : public ::testing::TestWithParam<std::tuple<Kind, Tls>> {
protected:
    void SetUp() override {
        const auto [kind, tls] = GetParam();
        if (const auto reason = FtpServer::unavailable(kind, tls)) GTEST_SKIP() << *reason;
        server.emplace(kind, FtpServer::Options{.tls = tls, .passive = relay.passivePorts()});
        relay.connectTo(*server);
    }

    [[nodiscard]] std::unique_ptr<LocalSite> makeSite(const FileTree& files = {}) const {
        auto site = std::make_unique<LocalSite>(*server, files);
        site->profile = relay.profileFor(*server, site->root(), server->remoteFolder("site"));
        return site;
    }

    // The failure of a first download; "" if there is none.
    [[nodiscard]] static std::string downloadFailure(const FTPTransport& transport) {
        return testing::failureOf([&] {
            transport.downloadTree("", 0, ignore, ignore);
            return 0;
        });
    }

    Relay relay;
    std::optional<FtpServer> server;
    const testing::ScopedTrust trust{testing::certificates().ca};
};

// The cuts go through lines and between them, and with TLS through the handshake as well.
TEST_P(EarlyEnd, CutListingIsNeverTakenForWhole) {
    constexpr std::size_t many = 8;
    for (std::size_t n = 0; n < many; ++n) server->put("site/page" + std::to_string(10 + n), "x");
    const bool isPlain = server->tls() == Tls::none;
    for (const std::size_t times : {std::size_t{1}, Relay::everyTime}) {
        for (std::size_t bytes = 51; bytes < (isPlain ? 500 : 2600); bytes += isPlain ? 51 : 255) {
            relay.cut({.direction = Relay::Direction::toClient, .bytes = bytes, .times = times});
            std::size_t listed = 0;
            const auto failure = testing::failureOf([&] { listed = makeSite()->transport().test(); });
            EXPECT_EQ(listed, failure.empty() ? many : 0) << bytes << " bytes, " << times << " times: " << failure;
            EXPECT_TRUE(failure.empty() || times > 1) << bytes << " bytes: " << failure;
        }
    }
    EXPECT_GE(relay.cuts(), 9U);
}

// Small files are fetched again, the large one continues.
TEST_P(EarlyEnd, InterruptedDownloadsArriveWhole) {
    FileTree tree{{"a", testing::randomBytes(40'000, 1)}, {"large", testing::randomBytes(5'000'000, 2)}};
    for (int n = 0; n < 5; ++n) tree["small" + std::to_string(n)] = testing::randomBytes(4096, n);
    for (const auto& [path, content] : tree) {
        server->put("site/" + path, content);
        testing::touch(server->root() / "site" / path, moment + std::chrono::hours(1));
    }
    for (const bool replaces : {false, true}) {
        const auto local = makeSite(replaces ? FileTree{{"a", "mine"}, {"large", "mine"}} : FileTree{});
        for (const auto& [path, content] : local->files()) testing::touch(*local / path, moment);
        // Cuts every larger transfer: the large file takes six logins.
        relay.cut({.direction = Relay::Direction::toClient, .bytes = 900'000, .times = Relay::everyTime});
        EXPECT_EQ(downloadFailure(local->transport()), "");
        EXPECT_EQ(local->files(), tree);
    }
    EXPECT_EQ(relay.cuts(), 10U);
    const auto once = makeSite();
    relay.cut({.direction = Relay::Direction::toClient, .bytes = 20'000});
    EXPECT_EQ(downloadFailure(once->transport()), "");
    EXPECT_EQ(once->files(), tree);
    std::filesystem::remove(server->root() / "site/large"); // it would arrive, by 20 KB a login
    const auto always = makeSite();
    relay.cut({.direction = Relay::Direction::toClient, .bytes = 20'000, .times = Relay::everyTime});
    EXPECT_NE(downloadFailure(always->transport()), "");
    for (const auto& [path, content] : always->files()) EXPECT_EQ(content, tree.at(path)) << path;
}

// The beginning of an older version is not used for the newer one.
TEST_P(EarlyEnd, ChangedFileIsDownloadedFromItsBeginning) {
    const auto before = testing::randomBytes(3'000'000, 1);
    const auto after = testing::randomBytes(3'000'000, 2);
    server->put("site/large", before);
    testing::touch(server->root() / "site/large", moment);
    const auto local = makeSite();
    auto transport = local->transport();
    relay.cut({.direction = Relay::Direction::toClient, .bytes = 1'000'000});
    struct Editing final : TransferObserver {
        std::function<void()> edit;
        int begun = 0;
        void folderListed(std::uint64_t) override {}
        void fileDone() override {}
        void fileBegins(const std::string&, std::optional<std::uint64_t>) override {
            if (++begun == 2) edit();
        }
        void fileMoved(std::uint64_t) override {}
    } editing;
    editing.edit = [&] {
        server->put("site/large", after);
        testing::touch(server->root() / "site/large", moment + std::chrono::hours(1));
    };
    transport.observer = &editing;
    EXPECT_EQ(downloadFailure(transport), "");
    EXPECT_EQ(local->files(), (FileTree{{"large", after}}));
    EXPECT_EQ(relay.cuts(), 1U);
}

class TornUpload : public EarlyEnd {};

TEST_P(TornUpload, NeverGoesLiveAndIsCompleted) {
    server->put("site/page", "old");
    const auto content = testing::randomBytes(1'200'000);
    const auto site = makeSite({{"page", content}});
    auto transport = site->transport();
    transport.limits = {
        .run = std::chrono::seconds(2), .largestPart = 256'000, .firstPart = 64'000, .worthContinuing = 64'000};
    int sends = 0;
    const auto breakTheLine = [&](const FileToPublish&) {
        if (++sends == 3) relay.cut({.times = Relay::everyTime});
    };
    EXPECT_FALSE(publish(transport, {site->toPublish("page")}, {.sending = breakTheLine}));
    EXPECT_EQ(testing::leftoverPartFiles(server->root()).size(), 1U);
    EXPECT_EQ(testing::readFile(server->root() / "site/page"), "old");
    relay.cut({.bytes = 100'000, .times = 2});
    transport.upload("page", site->fingerprint("page"));
    EXPECT_EQ(testing::readTree(server->root()), (FileTree{{"site/page", content}}));
    EXPECT_GE(relay.cuts(), 3U);
}

std::string nameOf(const ::testing::TestParamInfo<EarlyEnd::ParamType>& info) {
    const auto [kind, tls] = info.param;
    return FtpServer::name(kind) + (tls == Tls::none ? "Plain" : "Tls");
}

using ::testing::Combine;
using ::testing::Values;
const auto appending = Values( // proftpd forbids it
    std::tuple(Kind::vsftpd, Tls::none), std::tuple(Kind::pureftpd, Tls::none),
    std::tuple(Kind::pureftpd, Tls::explicitTls));
INSTANTIATE_TEST_SUITE_P(
    On, EarlyEnd, Combine(Values(Kind::proftpd, Kind::vsftpd, Kind::pureftpd), Values(Tls::none, Tls::explicitTls)),
    nameOf);
INSTANTIATE_TEST_SUITE_P(On, TornUpload, appending, nameOf);

} // namespace
} // namespace zembrastel
