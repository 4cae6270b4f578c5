#include "transport/certificate/certificate_inspection.h"

#include "platform/text.h"
#include "transport/curl/conversation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <openssl/x509_vfy.h>

namespace zembrastel {
namespace {

// What this machine's lack of trust in the issuer is to OpenSSL.
constexpr std::array issuerErrors{
    X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT,       X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT,
    X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN,       X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY,
    X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE, X509_V_ERR_CERT_UNTRUSTED};

// Only the server's address is of interest.
Profile withoutLogin(const Profile& profile) {
    Profile address;
    address.host = profile.host;
    address.port = profile.port;
    address.transport = profile.transport;
    address.remoteFolder = "/";
    return address;
}

TransferBlock handshake(std::string facts) {
    return {.path = "", .directory = true, .options = {{"pinnedpubkey", KeyHash{}.pin()}}, .facts = std::move(facts)};
}

Verification verificationIn(const BlockOutcome& outcome) {
    if (outcome.code == CurlCode::wrongKey) return Verification::verified;
    int error = 0;
    std::from_chars(outcome.facts.data(), outcome.facts.data() + outcome.facts.size(), error);
    return std::ranges::find(issuerErrors, error) == issuerErrors.end() ? Verification::refused
                                                                        : Verification::untrusted;
}

} // namespace

std::vector<CertificateFault> certificateFaults(
    const ServerCertificate& certificate, const std::string& host, Verification verification,
    std::chrono::system_clock::time_point now) {
    std::vector<CertificateFault> faults;
    if (verification == Verification::verified) return faults;
    if (!certificate.isFor(host)) faults.push_back(CertificateFault::otherName);
    if (verification == Verification::untrusted) {
        faults.push_back(certificate.selfSigned ? CertificateFault::selfSigned : CertificateFault::unknownAuthority);
    }
    if (now > certificate.validUntil) faults.push_back(CertificateFault::expired);
    if (now < certificate.validFrom) faults.push_back(CertificateFault::notYetValid);
    if (faults.empty()) faults.push_back(CertificateFault::otherFault);
    return faults;
}

InspectedCertificate inspectCertificate(const Profile& profile, TransferControl& control, const Clock& clock) {
    if (profile.transport == TransferProtocol::ftp) {
        throw SyncError("The connection to " + printable(profile.host) + " is not encrypted: there is no certificate.");
    }
    // The first one verifies the certificate, the second one shows it.
    TransferPlan plan{.blocks = {handshake("%{ssl_verify_result}"), handshake("%{certs}")}};
    plan.blocks.back().options.push_back({"insecure"});
    std::vector<BlockOutcome> outcomes;
    const ConversationEvents events{.ended = [&outcomes](std::size_t, BlockOutcome outcome) {
        outcomes.push_back(std::move(outcome));
        const auto code = outcomes.back().code;
        return code == CurlCode::wrongKey || (outcomes.size() == 1 && code == CurlCode::untrustedCertificate);
    }};
    converse(withoutLogin(profile), "", control, plan, events);
    const auto& last = outcomes.back();
    if (last.code != CurlCode::wrongKey || outcomes.size() < plan.blocks.size()) {
        throw TransferError(last.code, last.message);
    }
    InspectedCertificate inspected{.certificate = ServerCertificate::parse(last.facts)};
    inspected.faults =
        certificateFaults(inspected.certificate, profile.host, verificationIn(outcomes.front()), clock.now());
    return inspected;
}

} // namespace zembrastel
