#include "support/certificates.h"

#include "support/program.h"
#include "support/temporary_folder.h"

#include <cstdlib>
#include <stdexcept>

namespace zembrastel::testing {

namespace {

constexpr const char* variable = "CURL_CA_BUNDLE";

struct CertificateFolder {
    TemporaryFolder folder;
    Certificates paths{
        .ca = folder / "ca.pem",
        .otherCa = folder / "other-ca.pem",
        .server = folder / "server.pem",
        .wrongHost = folder / "wrong.pem",
        .expired = folder / "expired.pem",
        .selfSigned = folder / "self.pem",
        .renewed = folder / "renewed.pem",
        .impostor = folder / "impostor.pem",
    };

    CertificateFolder() {
        const std::string script = ZEMBRASTEL_SOURCE_DIR "/tests/support/make_certificates";
        if (runProgram({script, folder.path()}).status != 0) throw std::runtime_error(script + " failed");
    }
};

} // namespace

const Certificates& certificates() {
    static const CertificateFolder made;
    return made.paths;
}

ScopedTrust::ScopedTrust(const std::filesystem::path& authority) {
    if (const char* value = std::getenv(variable)) before = value;
    setenv(variable, authority.c_str(), 1);
}

ScopedTrust::~ScopedTrust() {
    if (before) {
        setenv(variable, before->c_str(), 1);
    } else {
        unsetenv(variable);
    }
}

} // namespace zembrastel::testing
