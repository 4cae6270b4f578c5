// Throw-away TLS certificates, and the trust in them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace zembrastel::testing {

// Paths of PEM files; all but the authorities hold key and certificate, as servers take them.
struct Certificates {
    std::filesystem::path ca;         // signed the others, but for the last one and selfSigned
    std::filesystem::path otherCa;    // an authority that signed none
    std::filesystem::path server;     // for localhost, 127.0.0.1 and 127.0.0.2
    std::filesystem::path wrongHost;  // for another host
    std::filesystem::path expired;    // for localhost, but long over
    std::filesystem::path selfSigned; // for vps.invalid and localhost
    std::filesystem::path renewed;    // with the same key, signed by the authority, for 127.0.0.2, and long over
    std::filesystem::path impostor;   // with the names of selfSigned and another key
};

// Made at the first call, for this process, and removed at its end. Throws std::runtime_error.
[[nodiscard]] const Certificates& certificates();

// While it lives, the curl that this process starts trusts this authority and no other.
//
// It changes the environment (CURL_CA_BUNDLE, which wins over all that the machine may have set), which no other thread
// may be using at that moment: make it before any thread is started and let it go after all have ended.
class ScopedTrust {
public:
    explicit ScopedTrust(const std::filesystem::path& authority);
    ScopedTrust(const ScopedTrust&) = delete;
    ScopedTrust& operator=(const ScopedTrust&) = delete;
    ~ScopedTrust();

private:
    std::optional<std::string> before;
};

} // namespace zembrastel::testing
