#include "app/diagnosis/certificate_text.h"

#include <array>
#include <ctime>

namespace zembrastel {
namespace {

std::string listed(const ServerCertificate& certificate) {
    if (certificate.names.empty()) return certificate.issuedFor;
    std::string names;
    for (const auto& name : certificate.names) names += (names.empty() ? "" : ", ") + name;
    return names;
}

} // namespace

std::string dayOf(std::chrono::sys_seconds instant) {
    const std::time_t seconds = instant.time_since_epoch().count();
    std::tm parts{};
    std::array<char, 32> text{};
    ::gmtime_r(&seconds, &parts);
    std::strftime(text.data(), text.size(), "%F", &parts);
    return text.data();
}

std::string_view word(CertificateFault fault) {
    switch (fault) {
    case CertificateFault::otherName:
        return "otherName";
    case CertificateFault::selfSigned:
        return "selfSigned";
    case CertificateFault::unknownAuthority:
        return "unknownAuthority";
    case CertificateFault::expired:
        return "expired";
    case CertificateFault::notYetValid:
        return "notYetValid";
    case CertificateFault::otherFault:
        break;
    }
    return "otherFault";
}

std::string faultText(CertificateFault fault, const ServerCertificate& certificate, const std::string& host) {
    switch (fault) {
    case CertificateFault::otherName:
        return "Not the name of this server, " + host;
    case CertificateFault::selfSigned:
        return "Signed by itself, not by an authority";
    case CertificateFault::unknownAuthority:
        return "Signed by an unknown authority";
    case CertificateFault::expired:
        return "Expired on " + dayOf(certificate.validUntil);
    case CertificateFault::notYetValid:
        return "Not valid before " + dayOf(certificate.validFrom);
    case CertificateFault::otherFault:
        break;
    }
    return "Refused by this machine";
}

Finding certificateFinding(const Profile& profile, const SeenCertificate& seen) {
    const auto& [certificate, faults] = seen.inspected;
    std::string text = "The server's certificate cannot be verified.";
    if (const auto* trusted = profile.keyInForce()) {
        text = "The key of " + profile.host + " has changed: the profile trusts " + trusted->key.text() + ".";
    }
    for (const auto fault : faults) text += " " + faultText(fault, certificate, profile.host) + ".";
    text += " It is issued for " + listed(certificate) + ". Its key is " + certificate.key.text() + ".";
    const bool nameIsAll = faults == std::vector{CertificateFault::otherName};
    std::string remedy = !seen.otherNames.empty() && nameIsAll
                             ? "Use " + seen.otherNames.front()
                                   + " as the server in the profile: the certificate is for this name, which leads to "
                                     "the same server. If that is not possible, ask"
                             : "Ask";
    remedy += " the hosting provider for the SHA-256 of the server's key. If it is the one above, trust it with the "
              "command \"profile trust\". An attacker's server would have another key.";
    return wrong(Subject::certificate, text, remedy);
}

} // namespace zembrastel
