// profile trust and doctor with a server whose certificate cannot be verified.
#include "cli_run.h"

#include "support/certificates.h"
#include "support/ftp_server.h"
#include "transport/certificate/server_certificate.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

class TrustCommands : public ::testing::Test {
protected:
    TrustCommands() {
        writeTree(site, {{"index.html", "hello"}});
        server.emplace(
            FtpServer::Kind::odd, FtpServer::Options{
                                      .tls = FtpServer::Tls::explicitTls,
                                      .certificate = certificates().selfSigned,
                                      .extra = {"--log", log.string()}});
        Profile profile = profileFor(*server, site, "/");
        profile.name = "x";
        profile.host = "127.0.0.1"; // for which the certificate is not
        place.saveProfile(profile);
        place.savePassword(server->password());
        place.variables = {"CURL_CA_BUNDLE=" + certificates().ca.string()};
    }

    static std::string keyOf(const std::filesystem::path& certificate) {
        return ServerCertificate::parse(readFile(certificate)).key.text();
    }

    [[nodiscard]] CliResult answer(const std::string& text) const {
        return place.runInShellWithSecretService(
            "printf '" + text + "\\n' | script -qec " + cli::shellQuoted(place.shellCommand("profile trust x"))
            + " /dev/null");
    }

    CliPlace place;
    std::filesystem::path site = place.path("site");
    std::filesystem::path log = place.path("log");
    std::optional<FtpServer> server;
};

TEST_F(TrustCommands, OnlyTheRightKeyIsTrusted) {
    const std::string right = keyOf(certificates().selfSigned);
    const std::string wrong = keyOf(certificates().impostor);
    const std::string before = readFile(place.stateFile());
    for (const auto& [status, options, printed] : std::vector<std::tuple<int, std::string, std::string>>{
             {2, "", "profile trust needs a terminal to ask in. --key SHA256"},
             {2, "--json", "profile trust needs a terminal"},
             {2, "--key 1234", "--key is the SHA-256 of a public key"},
             {1, "--key " + wrong, "The key of 127.0.0.1 is " + right + ", not the one of --key."},
             {0, "--forget", "\"x\" trusts no key."}}) {
        place.expect(status, "profile trust x " + options, {printed});
        EXPECT_EQ(readFile(place.stateFile()), before);
    }
    place.expect(1, "test x", {"curl: (60)", "profile trust"});
    EXPECT_EQ(answer("n").status, 1);
    EXPECT_EQ(readFile(place.stateFile()), before);
    EXPECT_FALSE(contains(readFile(log), "USER"));

    const auto asked = answer("y");
    EXPECT_EQ(asked.status, 0) << asked.output;
    for (const auto* text :
         {"vps.invalid localhost", "! Not the name of this server, 127.0.0.1",
          "! Signed by itself, not by an authority", "Anyone who holds it can read and change what you upload."}) {
        EXPECT_TRUE(contains(asked.output, text));
    }
    place.expect(0, "test x", {"Connected."});
    place.expect(0, "profile show x", {"Trusted key", KeyHash::parse(right)->grouped()});
    place.expect(0, "doctor x", {"the server has the key that the profile trusts"});
    place.expect(0, "profile trust x --json --key " + right, {R"("key":")" + right + R"(","trusted":true)"});

    const Profile other = place.profile();
    place.password.clear(); // which needs no secret service then
    place.expect(0, "profile duplicate x y");
    EXPECT_EQ(place.saved().profiles.back().trustedKey, other.trustedKey); // of the same server
    place.expect(0, "profile set x --host localhost");
    place.expect(0, "profile trust y --forget", {"verified again"});
    for (const auto& profile : place.saved().profiles) EXPECT_FALSE(profile.trustedKey);
}

TEST_F(TrustCommands, ChangedKeyIsExplainedAndGetsNoLogin) {
    Profile profile = place.profile();
    profile.trustedKey =
        TrustedKey{.key = *KeyHash::parse(keyOf(certificates().impostor)), .host = profile.host, .port = profile.port};
    place.saveProfile(profile);
    const std::string changed = "The key of 127.0.0.1 has changed: it is not the one that this profile trusts.";
    place.expect(1, "test x", {changed});
    place.expect(1, "push x", {changed});
    place.expect(1, "doctor x", {"the profile trusts " + profile.trustedKey->key.text()});
    EXPECT_FALSE(contains(readFile(log), "USER"));
    place.expect(0, "profile trust x --key " + keyOf(certificates().selfSigned));
    place.expect(0, "push x");
    EXPECT_EQ(readFile(server->root() / "index.html"), "hello");
}

TEST_F(TrustCommands, DoctorNamesTheServersOtherName) {
    place.expect(
        1, "doctor x",
        {"It is issued for vps.invalid, localhost.", "Its key is " + keyOf(certificates().selfSigned),
         "profile trust"});
    place.variables = {"CURL_CA_BUNDLE=" + certificates().selfSigned.string()}; // only the name is wrong now
    place.expect(1, "doctor x", {"Use localhost as the server in the profile"});
    const auto password = std::exchange(place.password, {});
    place.expect(0, "profile set x --host localhost");
    place.password = password;
    place.expect(0, "doctor x");
    place.expect(0, "profile trust x --key " + keyOf(certificates().selfSigned), {"needs no trust"});
    EXPECT_FALSE(place.profile().trustedKey);
}

} // namespace
} // namespace zembrastel::testing
