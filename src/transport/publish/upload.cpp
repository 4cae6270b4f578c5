#include "model/error.h"
#include "transport/ftp_transport.h"
#include "transport/publish/publishing.h"

#include <optional>

namespace zembrastel {

void FTPTransport::upload(const std::string& path, const Fingerprint& fingerprint) const {
    std::optional<PublishFailure> failure;
    publish(
        *this, {{.path = path, .fingerprint = fingerprint}},
        {.failed = [&failure](const FileToPublish&, const PublishFailure& why) { failure = why; }});
    if (failure) throw TransferError(failure->code, failure->message, failure->reply);
}

} // namespace zembrastel
