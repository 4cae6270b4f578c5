#include "app/diagnosis/diagnosis.h"

#include "app/diagnosis/failure_catalogue.h"
#include "platform/text.h"

#include <algorithm>

namespace zembrastel {
namespace {

constexpr std::int64_t implicitPort = 990;

std::string place(const Profile& profile) { return profile.host + ", port " + std::to_string(profile.port); }

constexpr const char* chooseExplicit = "In the profile choose FTPS (TLS), usually with port 21. Ask the hosting "
                                       "provider which kind of FTPS the server has, and at "
                                       "which port.";
constexpr const char* chooseImplicit = "In the profile choose FTPS (implicit TLS) for this port, or FTPS (TLS) with "
                                       "port 21. Ask the hosting provider which kind of "
                                       "FTPS the server has, and at which port.";

bool hangsUp(const Transcript& answer) {
    return std::ranges::any_of(answer.replies, [](const auto& each) { return each.starts_with("421"); });
}

Finding refusedCertificate(const Profile& profile, const Transcript& answer) {
    const std::string& words = answer.failure;
    const std::string line = words.substr(0, words.find('\n'));
    const std::string heading = headingOf(profile, answer) + " ";
    if (contains(words, "expired")) {
        return wrong(
            Subject::certificate, heading + "It has expired. " + line,
            "Ask the hosting provider to renew the certificate of the FTP server. Check this machine's date as well.");
    }
    if (containsAny(words, {"does not match", "no alternative certificate subject name"})) {
        return wrong(
            Subject::certificate, heading + "It is for another name. " + line,
            "Ask the hosting provider for the name that the FTP server's certificate is for, often that of the "
            "machine, and use "
            "it in the profile.");
    }
    return wrong(
        Subject::certificate, heading + line,
        "Ask the hosting provider for a certificate from a known authority, with all intermediate certificates. Do not "
        "go on "
        "without: an attacker could pass for the server and read the password.");
}

Finding refusedLogin(const Profile& profile, const Transcript& answer) {
    const std::string words = asciiLowercase(refusal(answer));
    if (reportsTooMany(answer)) return turnedAway(profile, answer);
    if (profile.transport == TransferProtocol::ftp && containsAny(words, {"tls", "ssl", "encrypt", "secure"})) {
        return wrong(
            Subject::encryption, "The server takes logins only when they are encrypted." + said(answer),
            chooseExplicit);
    }
    return wrong(
        Subject::login, headingOf(profile, answer) + said(answer),
        "Check both; the password is often not that of the mail account or the hosting provider's customer pages. Ask "
        "the hosting provider "
        "whether the FTP account is active, and whether it may be used from your address.");
}

bool loggedIn(const Transcript& answer) {
    return answer.succeeded
           || std::ranges::any_of(answer.replies, [](const auto& reply) { return reply.starts_with("230"); });
}

} // namespace

std::string headingOf(const Profile& profile, const Transcript& answer) {
    const Failure failure{
        .message = answer.failure,
        .kind = Failure::Kind::transfer,
        .code = answer.code,
        .reply = hangsUp(answer) ? FtpReply::hangsUp : FtpReply::none};
    return explain(failure, profile).heading.text();
}

bool reportsTooMany(const Transcript& answer) {
    return std::ranges::any_of(answer.replies, [](const std::string& reply) {
        const std::string words = asciiLowercase(reply);
        return (reply.starts_with('4') || reply.starts_with('5'))
               && containsAny(
                   words, {"too many", "maximum number", "connection limit", "max clients", "already logged in",
                           "maximum login", "maximum client", "many users", "many connections"});
    });
}

Finding unreached(const Profile& profile, const Transcript& answer) {
    switch (answer.code) {
    case CurlCode::hostNotFound:
        return wrong(
            Subject::address, headingOf(profile, answer),
            "Check the server's name in the profile. If it is right, check whether this machine is online.");
    case CurlCode::notConnected:
        return wrong(
            Subject::port, headingOf(profile, answer) + said(answer),
            "Check the port: usually 21, and 990 for FTPS (implicit TLS). Ask the hosting provider for the FTP port "
            "and whether "
            "FTP is switched on.");
    default:
        return wrong(
            Subject::port, headingOf(profile, answer) + said(answer),
            "Check the name and the port. A firewall, here or at the hosting provider's, may drop the connection: ask "
            "the hosting provider "
            "whether your address is let in.");
    }
}

Finding turnedAway(const Profile& profile, const Transcript& answer) {
    const std::string heading = headingOf(profile, {.code = CurlCode::timedOut, .replies = {"421"}});
    if (reportsTooMany(answer)) {
        return wrong(
            Subject::connections, heading + said(answer),
            "Close other FTP programs that use this account and try again in some minutes. Ask the hosting provider "
            "how many "
            "connections an account may have; Zembrastel needs one for each profile that is at work, and some more "
            "while its windows show folders of the server.");
    }
    return wrong(
        Subject::connections, (hangsUp(answer) ? heading : "The server answers and hangs up.") + said(answer),
        "Try again later. Ask the hosting provider why the server refuses connections from your address.");
}

std::optional<Finding> refusedBeforeLogin(const Profile& profile, const Transcript& answer) {
    const CurlCode code = answer.code;
    if (loggedIn(answer)) return std::nullopt;
    if (code == CurlCode::untrustedCertificate) return refusedCertificate(profile, answer);
    if (code == CurlCode::wrongKey) {
        return wrong(
            Subject::certificate, headingOf(profile, answer),
            "Ask the hosting provider whether the server has a new key before you trust it.");
    }
    if (code == CurlCode::loginRefused) return refusedLogin(profile, answer);
    if (hangsUp(answer) || reportsTooMany(answer)) return turnedAway(profile, answer);
    if (code == CurlCode::tlsRefused) {
        return wrong(
            Subject::encryption, headingOf(profile, answer) + said(answer),
            "Ask the hosting provider whether the server has FTPS, of which kind and at which port. Only where it has "
            "none, "
            "choose FTP in the profile: the password then travels readable.");
    }
    if (code == CurlCode::tlsFailed && profile.transport == TransferProtocol::implicitTLS) {
        return wrong(
            Subject::encryption, "The server does not begin with TLS at this port." + said(answer), chooseExplicit);
    }
    if (code == CurlCode::tlsFailed) {
        return wrong(
            Subject::encryption, headingOf(profile, answer) + said(answer),
            "Ask the hosting provider to let the FTP server use TLS 1.2 or 1.3.");
    }
    if (answer.replies.empty() && profile.transport != TransferProtocol::implicitTLS && profile.port == implicitPort) {
        return wrong(
            Subject::encryption, "The server says nothing: at port 990 it usually waits for TLS from the first moment.",
            chooseImplicit);
    }
    if (answer.replies.empty()) {
        return wrong(
            Subject::connections,
            "Something takes the connection at " + place(profile) + " and says nothing." + said(answer),
            "Check the port: this may be no FTP server, or one that waits for TLS from the first moment, for which "
            "there is FTPS (implicit TLS). Ask the hosting provider for port and kind of encryption.");
    }
    return turnedAway(profile, answer);
}

} // namespace zembrastel
