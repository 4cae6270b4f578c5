// Fetches a server's certificate without a login, and finds out why this machine cannot verify it.
//
// Blocks its thread. curl accepts only a key that no server has, so each connection ends in the TLS handshake, and the
// server gets nothing but the request for TLS. curl has no name and no password for these connections.
#pragma once

#include "model/profile.h"
#include "platform/clock.h"
#include "transport/certificate/server_certificate.h"
#include "transport/transfer_control.h"

#include <string>
#include <vector>

namespace zembrastel {

// Why a certificate cannot be verified.
enum class CertificateFault {
    otherName,
    selfSigned,
    unknownAuthority, // signed by an authority that this machine does not know
    expired,
    notYetValid,
    otherFault // refused for another reason, such as a weak key
};

struct InspectedCertificate {
    ServerCertificate certificate;
    std::vector<CertificateFault> faults{}; // empty if it can be verified
};

// How curl's verification of a certificate ended.
enum class Verification {
    verified,
    untrusted, // it leads to no authority that this machine knows
    refused    // for another reason
};

// The reasons, in the order of the enumeration. A pure function.
[[nodiscard]] std::vector<CertificateFault> certificateFaults(
    const ServerCertificate& certificate, const std::string& host, Verification verification,
    std::chrono::system_clock::time_point now);

// Inspects the certificate of the profile's server, whether or not it has a trusted key. Throws SyncError if the
// connection is not encrypted or fails before the server has sent its certificate, and Cancelled.
[[nodiscard]] InspectedCertificate inspectCertificate(
    const Profile& profile, TransferControl& control, const Clock& clock);

// Other names of the server for which the certificate is: names in it that lead to the same addresses as `host`, and
// the name that the domain name system has for such an address. They may be wrong, since nothing protects those
// answers.
[[nodiscard]] std::vector<std::string> otherNamesOf(const std::string& host, const ServerCertificate& certificate);

} // namespace zembrastel
