#include "model/error.h"
#include "transport/ftp_transport.h"
#include "transport/publish/publishing.h"

#include <optional>

namespace zembrastel {

void FTPTransport::upload(const std::string& path, const Fingerprint& fingerprint) const {
    std::optional<std::string> failure;
    publish(
        *this, {{.path = path, .fingerprint = fingerprint}},
        {.failed = [&failure](const FileToPublish&, const PublishFailure& why) { failure = why.message; }});
    if (failure) throw SyncError(*failure);
}

} // namespace zembrastel
