#include "app/diagnosis/connection_diagnosis.h"

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

Finding refusedCertificate(const Profile& profile, const Transcript& answer) {
    const std::string& words = answer.failure;
    const std::string line = words.substr(0, words.find('\n'));
    if (contains(words, "expired")) {
        return wrong(
            Subject::certificate, "The server's certificate has expired. " + line,
            "Ask the hosting provider to renew the certificate of the FTP server. Check this machine's date as well.");
    }
    if (containsAny(words, {"does not match", "no alternative certificate subject name"})) {
        return wrong(
            Subject::certificate, "The server's certificate is for another name than " + profile.host + ". " + line,
            "Ask the hosting provider for the name that the FTP server's certificate is for, often that of the "
            "machine, and use "
            "it in the profile.");
    }
    return wrong(
        Subject::certificate, "This machine does not trust the server's certificate. " + line,
        "Ask the hosting provider for a certificate from a known authority, with all intermediate certificates. Do not "
        "go on "
        "without: an attacker could pass for the server and read the password.");
}

Finding refusedLogin(const Profile& profile, const Transcript& answer) {
    const std::string words = asciiLowercase(refusal(answer));
    if (reportsTooMany(answer)) return turnedAway(answer);
    if (profile.transport == TransferProtocol::ftp && containsAny(words, {"tls", "ssl", "encrypt", "secure"})) {
        return wrong(
            Subject::encryption, "The server takes logins only when they are encrypted." + said(answer),
            chooseExplicit);
    }
    return wrong(
        Subject::login, "The server refused the user name " + profile.username + " or the password." + said(answer),
        "Check both; the password is often not that of the mail account or the hosting provider's customer pages. Ask "
        "the hosting provider "
        "whether the FTP account is active, and whether it may be used from your address.");
}

bool loggedIn(const Transcript& answer) {
    return answer.succeeded
           || std::ranges::any_of(answer.replies, [](const auto& reply) { return reply.starts_with("230"); });
}

} // namespace

int curlCode(std::string_view failure) {
    constexpr std::string_view beginning = "curl: (";
    int code = 0;
    if (!failure.starts_with(beginning)) return 0;
    for (const char digit : failure.substr(beginning.size())) {
        if (digit < '0' || digit > '9') break;
        code = code * 10 + (digit - '0');
    }
    return code;
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
    switch (curlCode(answer.failure)) {
    case 6:
        return wrong(
            Subject::address, "The name " + profile.host + " is unknown.",
            "Check the server's name in the profile. If it is right, check whether this machine is online.");
    case 7:
        return wrong(
            Subject::port,
            "The machine " + profile.host + " has nothing at port " + std::to_string(profile.port) + "." + said(answer),
            "Check the port: usually 21, and 990 for FTPS (implicit TLS). Ask the hosting provider for the FTP port "
            "and whether "
            "FTP is switched on.");
    default:
        return wrong(
            Subject::port, "There is no answer from " + place(profile) + "." + said(answer),
            "Check the name and the port. A firewall, here or at the hosting provider's, may drop the connection: ask "
            "the hosting provider "
            "whether your address is let in.");
    }
}

Finding turnedAway(const Transcript& answer) {
    if (reportsTooMany(answer)) {
        return wrong(
            Subject::connections, "The server takes no further connection: there are too many." + said(answer),
            "Close other FTP programs that use this account and try again in some minutes. Ask the hosting provider "
            "how many "
            "connections an account may have; Zembrastel needs one for each profile that is at work, and some more "
            "while its windows show folders of the server.");
    }
    return wrong(
        Subject::connections, "The server answers and hangs up." + said(answer),
        "Try again later. Ask the hosting provider why the server refuses connections from your address.");
}

std::optional<Finding> refusedBeforeLogin(const Profile& profile, const Transcript& answer) {
    const int code = curlCode(answer.failure);
    if (loggedIn(answer)) return std::nullopt;
    if (code == 60) return refusedCertificate(profile, answer);
    if (code == 90) {
        return wrong(
            Subject::certificate, "The key of " + profile.host + " is not the one that the profile trusts.",
            "Ask the hosting provider whether the server has a new key before you trust it.");
    }
    if (code == 67) return refusedLogin(profile, answer);
    const bool hangsUp = std::ranges::any_of(answer.replies, [](const auto& each) { return each.starts_with("421"); });
    if (hangsUp || reportsTooMany(answer)) return turnedAway(answer);
    if (code == 64) {
        return wrong(
            Subject::encryption, "The server offers no encryption at this port." + said(answer),
            "Ask the hosting provider whether the server has FTPS, of which kind and at which port. Only where it has "
            "none, "
            "choose FTP in the profile: the password then travels readable.");
    }
    if (code == 35 && profile.transport == TransferProtocol::implicitTLS) {
        return wrong(
            Subject::encryption, "The server does not begin with TLS at this port." + said(answer), chooseExplicit);
    }
    if (code == 35) {
        return wrong(
            Subject::encryption, "The server and this machine do not agree on an encryption." + said(answer),
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
    return turnedAway(answer);
}

} // namespace zembrastel
