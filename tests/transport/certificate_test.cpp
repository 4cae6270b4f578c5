// Certificates that cannot be verified, and the trust in one key.
#include "platform/files.h"
#include "support/certificates.h"
#include "support/fake_clock.h"
#include "support/local_site.h"
#include "transport/certificate/certificate_inspection.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::certificates;
using testing::failureOf;
using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;

constexpr std::array everyTls{Tls::explicitTls, Tls::implicitTls};

ServerCertificate certificateIn(const fs::path& file) { return ServerCertificate::parse(readFile(file).value()); }

// Records its commands.
struct LoggingServer {
    LoggingServer(Tls tls, const fs::path& certificate)
        : server(Kind::odd, {.tls = tls, .certificate = certificate, .extra = {"--log", (logs / "log").string()}}) {}

    [[nodiscard]] std::string commands() const { return readFile(logs / "log").value_or(""); }

    testing::TemporaryFolder logs;
    FtpServer server;
};

// The profile of `site`, which trusts the key of this certificate for its server.
void trust(LocalSite& site, const fs::path& certificate) {
    site.profile.trustedKey =
        TrustedKey{.key = certificateIn(certificate).key, .host = site.profile.host, .port = site.profile.port};
}

TEST(TrustedKey, NoOtherKeyGetsALoginOrAFile) {
    struct Case {
        const char* what;
        fs::path certificate;
        bool accepted;
    };
    const testing::ScopedTrust authority(certificates().ca);
    for (const auto& [what, certificate, accepted] : std::vector<Case>{
             {"the trusted certificate", certificates().selfSigned, true},
             {"the same key, expired and for another name", certificates().renewed, true},
             {"the same names with another key", certificates().impostor, false},
             {"a certificate that can be verified, with another key", certificates().server, false}}) {
        for (const auto tls : everyTls) {
            SCOPED_TRACE(what);
            const LoggingServer logging(tls, certificate);
            LocalSite site(logging.server, {{"page", "x"}});
            trust(site, certificates().selfSigned);
            for (const bool uploads : {true, false}) {
                const auto failure = failureOf([&] {
                    if (uploads) site.transport().upload("page", site.fingerprint("page"));
                    return site.transport().test();
                });
                const std::string changed =
                    "The key of localhost has changed: it is not the one that this profile trusts.";
                EXPECT_EQ(failure.substr(0, changed.size()), accepted ? "" : changed);
            }
            EXPECT_EQ(logging.commands().find("USER") != std::string::npos, accepted) << logging.commands();
            EXPECT_EQ(testing::readTree(logging.server.root()).size(), accepted ? 1U : 0U);
        }
    }
}

TEST(TrustedKey, TransfersWorkOnRealServers) {
    const testing::ScopedTrust authority(certificates().otherCa);
    for (const auto kind : {Kind::proftpd, Kind::vsftpd, Kind::pureftpd}) {
        SCOPED_TRACE(FtpServer::name(kind));
        if (FtpServer::unavailable(kind, Tls::explicitTls)) continue;
        FtpServer server(kind, {.tls = Tls::explicitTls, .certificate = certificates().selfSigned});
        server.put("site/there", "x");
        LocalSite site(server, {{"page", "hello"}});
        trust(site, certificates().selfSigned);
        site.transport().upload("page", site.fingerprint("page"));
        EXPECT_EQ(site.transport().list("").size(), 2U);
        site.profile.trustedKey->port += 1; // of another server
        EXPECT_TRUE(failureOf([&] { return site.transport().test(); }).starts_with("curl: (60)"));
    }
}

TEST(CertificateInspection, SaysWhyAndSendsNoLogin) {
    using enum CertificateFault;
    struct Case {
        fs::path certificate;
        fs::path trusted;
        std::string host;
        std::vector<CertificateFault> faults;
    };
    for (const auto& [certificate, trusted, host, faults] : std::vector<Case>{
             {certificates().server, certificates().ca, "localhost", {}},
             {certificates().server, certificates().otherCa, "localhost", {unknownAuthority}},
             {certificates().wrongHost, certificates().ca, "localhost", {otherName}},
             {certificates().expired, certificates().ca, "localhost", {expired}},
             {certificates().selfSigned, certificates().ca, "127.0.0.1", {otherName, selfSigned}},
             {certificates().renewed, certificates().otherCa, "localhost", {otherName, unknownAuthority, expired}}}) {
        for (const auto tls : everyTls) {
            SCOPED_TRACE(certificate);
            const testing::ScopedTrust authority(trusted);
            const LoggingServer logging(tls, certificate);
            LocalSite site(logging.server);
            site.profile.host = host;
            TransferControl control;
            const auto inspected = inspectCertificate(site.profile, control, systemClock());
            EXPECT_EQ(inspected.faults, faults);
            EXPECT_EQ(inspected.certificate.key, certificateIn(certificate).key);
            const std::string sent = logging.commands();
            EXPECT_EQ(sent, tls == Tls::explicitTls ? "AUTH SSL\nAUTH SSL\n" : "");
        }
    }
    const auto shown = certificateIn(certificates().selfSigned);
    EXPECT_EQ(shown.issuedFor + shown.issuedBy, "vps.invalidvps.invalid");
    EXPECT_EQ(shown.names, (std::vector<std::string>{"vps.invalid", "localhost"}));
    EXPECT_EQ(otherNamesOf("127.0.0.1", shown), std::vector<std::string>{"localhost"});
    // As OpenSSL's own program calculates curl's form of it.
    const auto pin = testing::runProgram(
        {"/bin/sh", "-c",
         "openssl x509 -pubkey -noout -in \"$0\" | openssl pkey -pubin -outform der | openssl dgst -sha256 -binary | "
         "openssl base64",
         certificates().selfSigned.string()});
    EXPECT_EQ("sha256//" + pin.output, shown.key.pin() + "\n");
}

TEST(CertificateInspection, DamagedCertificateIsRefused) {
    const std::string pem = readFile(certificates().selfSigned).value();
    for (const auto& text :
         {std::string(), std::string("-----BEGIN CERTIFICATE-----\nMIIB\n-----END CERTIFICATE-----\n"),
          pem.substr(0, pem.size() / 2)}) {
        EXPECT_EQ(
            failureOf([&] { return ServerCertificate::parse(text).names; }),
            "The server's certificate cannot be read.");
    }
}

} // namespace
} // namespace zembrastel
