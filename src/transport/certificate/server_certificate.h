// The certificate of a server, as far as the user needs it for a decision.
//
// A value; any thread. Its texts come from the server: show them through printable().
#pragma once

#include "model/trusted_key.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct ServerCertificate {
    std::string issuedFor; // the common name, or else all of the subject
    std::string issuedBy;
    std::chrono::sys_seconds validFrom;
    std::chrono::sys_seconds validUntil;
    std::vector<std::string> names; // host names and IP addresses; a name may begin with "*."
    KeyHash key;
    bool selfSigned = false;
    std::string pem; // all of it

    // The first certificate in the text, which is the server's own. Throws SyncError if there is none that can be read.
    [[nodiscard]] static ServerCertificate parse(std::string_view pem);

    // True if it is for this host name or IPv4 address, by the rules of TLS (RFC 6125).
    [[nodiscard]] bool isFor(const std::string& host) const;
};

} // namespace zembrastel
