// The findings from given observations, and from real servers with wrong settings.
#include "app/diagnosis/diagnosis.h"

#include "support/local_site.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using testing::FtpServer;
using testing::LocalSite;
using Kind = FtpServer::Kind;
using Tls = FtpServer::Tls;
using Outcome = Finding::Outcome;
using Words = std::vector<std::string>;

const Finding* findingOf(const std::vector<Finding>& findings, std::string_view subject) {
    const auto found = std::ranges::find(findings, subject, [](const Finding& each) { return word(each.subject); });
    return found == findings.end() ? nullptr : &*found;
}

// The subjects of what is wrong.
Words wrongIn(const std::vector<Finding>& findings) {
    Words subjects;
    for (const auto& each : findings) {
        if (each.outcome == Outcome::wrong) subjects.emplace_back(word(each.subject));
    }
    return subjects;
}

bool allHelp(const std::vector<Finding>& findings) {
    return std::ranges::all_of(findings, [](const Finding& each) {
        const bool bad = each.outcome == Outcome::wrong || each.outcome == Outcome::notice;
        return !each.text.empty() && bad == !each.remedy.empty();
    });
}

Profile profileOf(TransferProtocol transport, std::int64_t port) {
    Profile profile;
    profile.host = "ftp.example.com";
    profile.transport = transport;
    profile.port = port;
    return profile;
}

TEST(Diagnosis, FailedConnectionIsNamedByItsCause) {
    const auto ftp = TransferProtocol::ftp;
    const auto ftps = TransferProtocol::ftps;
    const auto implicit = TransferProtocol::implicitTLS;
    struct Case {
        std::string failure;
        Words replies;
        std::string subject;
        std::string words; // of the text or the remedy
        TransferProtocol transport = ftps;
        std::int64_t port = 21;
        bool connected = true;
    };
    const std::string refused = "curl: (67) Access denied: 530";
    const std::string silence = "curl: (28) Timeout was reached";
    const std::string untrusted = "curl: (60) SSL certificate problem: ";
    for (const auto& [failure, replies, subject, words, transport, port, connected] : std::vector<Case>{
             {"curl: (6) Could not resolve host: x", {}, "address", "is not known", ftps, 21, false},
             {"curl: (7) Failed to connect",
              {},
              "port",
              "no answer from ftp.example.com at port 2121",
              ftps,
              2121,
              false},
             {"curl: (28) Connection timed out", {}, "port", "firewall", ftps, 21, false},
             {silence, {"421 Too many connections (8) from this IP"}, "connections", "how many connections", ftp},
             {silence, {"421 Service not available."}, "connections", "no further connection", ftp},
             {refused, {"530 Sorry, the maximum number of clients (5) for this user"}, "connections", "how many"},
             {refused, {"220 Hello", "530 Login incorrect."}, "login", "530 Login incorrect."},
             {refused, {"530 Non-anonymous sessions must use encryption."}, "encryption", "FTPS (TLS)", ftp},
             {refused, {"550 SSL/TLS required on the control channel"}, "encryption", "FTPS (TLS)", ftp},
             {"curl: (64) Requested SSL level failed", {"500 What?"}, "encryption", "does not encrypt"},
             {"curl: (35) wrong version number", {}, "encryption", "FTPS (TLS)", implicit},
             {silence, {}, "encryption", "FTPS (implicit TLS)", ftps, 990},
             {silence, {}, "connections", "says nothing", ftps, 2121},
             {"curl: (35) alert protocol version", {"220 Hello", "234 Go"}, "encryption", "TLS 1.2"},
             {untrusted + "certificate has expired\nMore", {"220 Hello", "234 Go"}, "certificate", "renew"},
             {"curl: (60) SSL: no alternative certificate subject name", {"234 Go"}, "certificate", "another name"},
             {untrusted + "self-signed certificate", {"234 Go"}, "certificate", "known authority"},
             {"curl: (9) Server denied you", {"230 In", "550 No such folder"}, "folder", "550 No such folder"},
             {silence, {"230 In", "227 Passive"}, "listing", "passive mode"}}) {
        const auto profile = profileOf(transport, port);
        const auto code = CurlCode(std::stoi(failure.substr(failure.find('(') + 1)));
        ServerObservations seen{
            .at = {},
            .mlsd = {.answer = {.connected = connected, .code = code, .failure = failure, .replies = replies}}};
        const auto findings = diagnose(profile, seen);
        EXPECT_EQ(wrongIn(findings), Words{subject}) << failure;
        const auto* finding = findingOf(findings, subject);
        ASSERT_NE(finding, nullptr) << failure;
        EXPECT_NE((finding->text + finding->remedy).find(words), std::string::npos) << finding->text;
        EXPECT_TRUE(allHelp(findings));
    }
}

TEST(Diagnosis, LostNetworkIsNamedInPlaceOfTheServer) {
    ServerObservations seen{.at = {}, .mlsd = {.answer = {.code = CurlCode::hostNotFound}}, .hasNetwork = false};
    const auto findings = diagnose(profileOf(TransferProtocol::ftps, 21), seen);
    EXPECT_EQ(wrongIn(findings), Words{"network"});
    EXPECT_TRUE(allHelp(findings));
}

TEST(Diagnosis, WrongClockIsNamed) {
    using namespace std::chrono_literals;
    struct Case {
        std::chrono::seconds ahead;
        bool isWrong;
        std::string words;
    };
    const std::chrono::sys_seconds now = std::chrono::sys_days(std::chrono::year(2026) / 1 / 1);
    for (const auto& [ahead, isWrong, words] : std::vector<Case>{
             {0s, false, "agrees"},
             {-90s, false, "agrees"},
             {9h, true, "9 hours ahead: the server reports dates in its local time"},
             {-5h - 30min + 20s, true, "5 hours 30 minutes behind: the server reports dates in its local time"},
             {37min, true, "37 minutes ahead: the server's clock is off"},
             {-24h * 400, true, "400 days behind: the server's clock is off"}}) {
        ServerObservations seen{.at = now, .mlsd = {.answer = {.succeeded = true}, .entries = {{}}}};
        seen.upload = SeenUpload{.at = now, .name = "test", .first = {.succeeded = true}};
        seen.upload->date = SeenDate{.path = "test", .answer = {.succeeded = true}, .date = toRemoteDate(now + ahead)};
        const auto findings = diagnose(profileOf(TransferProtocol::ftps, 21), seen);
        const auto* clock = findingOf(findings, "clock");
        ASSERT_NE(clock, nullptr);
        EXPECT_EQ(clock->outcome, isWrong ? Outcome::wrong : Outcome::fine) << words;
        EXPECT_NE(clock->text.find(words), std::string::npos) << clock->text;
    }
}

TEST(Diagnosis, CutListingIsNamed) {
    for (const auto& [count, cut] :
         std::vector<std::pair<std::size_t, bool>>{{9'990, false}, {9'998, true}, {10'000, true}, {10'050, false}}) {
        const ServerObservations seen{
            .at = {},
            .mlsd = {
                .answer = {.succeeded = true},
                .entries = std::vector<RemoteEntry>(count, RemoteEntry{.name = "a", .modified = std::nullopt})}};
        EXPECT_EQ(findingOf(diagnose(Profile{}, seen), "completeness") != nullptr, cut) << count;
    }
}

TEST(Diagnosis, HarmfulServerSettingsAreNamed) {
    struct Case {
        Kind kind;
        Words settings;
        Words wrong;
        std::string words; // of what is said
        bool deletes = true;
        Words environment = {};
    };
    for (const auto& [kind, settings, wrong, words, deletes, environment] : std::vector<Case>{
             {Kind::proftpd, {}, {}, "ListOptions"},
             {Kind::odd, {}, {}, "are listed"},
             {Kind::proftpd, {"AllowOverwrite off"}, {"replacement"}, "AllowOverwrite on"},
             {Kind::odd, {"--no-replace"}, {"replacement"}, "over one that is there"},
             {Kind::vsftpd, {"use_localtime=YES"}, {"clock"}, "9 hours ahead", true, {"TZ=Asia/Tokyo"}},
             {Kind::proftpd, {"PathDenyFilter \"(^|/)[.]\""}, {"temporaryName"}, "leading dot"},
             {Kind::vsftpd, {"deny_file={.*}"}, {"temporaryName"}, "leading dot"},
             {Kind::vsftpd, {"cmds_denied=RNFR"}, {"rename"}, "RNFR and RNTO"},
             {Kind::vsftpd, {"cmds_denied=DELE"}, {}, "which is left in the folder", false},
             {Kind::odd, {"--no", "STOR"}, {"upload"}, "takes no file"},
             {Kind::odd, {"--no", "MDTM"}, {"dateQuery"}, "MDTM"},
             {Kind::odd, {"--no", "MLSD"}, {}, "without dates"},
             {Kind::odd, {"--list", "odd", "--no", "MLSD"}, {"listing"}, "form of its own"},
             {Kind::pureftpd, {"-L6:5"}, {"completeness"}, "-L 20000:5"}}) {
        if (FtpServer::unavailable(kind, Tls::none)) continue;
        FtpServer server(kind, {.showHidden = kind == Kind::odd, .extra = settings, .environment = environment});
        for (const auto* name : {"page", "b", "c", "d", "e", "f", "g", "h"})
            server.put("site/" + std::string(name), "x");
        const LocalSite site(server);
        const auto before = testing::readTree(server.root());
        const auto findings =
            diagnose(site.profile, probeServer(site.transport(), true, systemClock(), [](const std::string&) {}));
        std::string said;
        for (const auto& each : findings) said += each.text + " " + each.remedy + "\n";
        const std::string what = FtpServer::name(kind) + (settings.empty() ? "" : " " + settings.front());
        EXPECT_EQ(wrongIn(findings), wrong) << what;
        EXPECT_NE(said.find(words), std::string::npos) << what << ": " << said;
        EXPECT_TRUE(allHelp(findings)) << what;
        EXPECT_EQ(testing::readTree(server.root()) == before, deletes) << what;
    }
}

} // namespace
} // namespace zembrastel
