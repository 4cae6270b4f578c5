#include "transport/publish/publishing.h"

#include "model/error.h"
#include "transport/ftp_transport.h"
#include "transport/publish/leftovers.h"
#include "transport/publish/publish_batch.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>

namespace zembrastel {

namespace {

bool publishAll(const FTPTransport& transport, const std::vector<FileToPublish>& files, const PublishEvents& events) {
    std::vector<std::uint64_t> sizes;
    sizes.reserve(files.size());
    for (const auto& file : files) sizes.push_back(static_cast<std::uint64_t>(file.fingerprint.size));
    std::deque<std::unique_ptr<Batch>> paused; // each with one large file; they take turns
    for (std::size_t begun = 0; begun < files.size();) {
        const auto length = batchLength(std::span(sizes).subspan(begun));
        auto batch = std::make_unique<Batch>(transport, std::span(files).subspan(begun, length), events);
        begun += length;
        const auto end = batch->run(begun < files.size() || !paused.empty());
        if (end == Batch::End::serverFailed) return false;
        if (end == Batch::End::paused) paused.push_back(std::move(batch));
    }
    while (!paused.empty()) {
        auto batch = std::move(paused.front());
        paused.pop_front();
        const auto end = batch->run(!paused.empty());
        if (end == Batch::End::serverFailed) return false;
        if (end == Batch::End::paused) paused.push_back(std::move(batch));
    }
    return true;
}

} // namespace

bool publish(const FTPTransport& transport, const std::vector<FileToPublish>& files, const PublishEvents& events) {
    const auto before = transport.traits->leftovers(transport.profile).size();
    if (!publishAll(transport, files, events)) return false;
    // Removes refused copies. Names for which that failed before wait for the next upload.
    if (transport.traits->leftovers(transport.profile).size() > before) removeLeftovers(transport);
    return true;
}

void FTPTransport::upload(const std::string& path, const Fingerprint& fingerprint) const {
    std::optional<PublishFailure> failure;
    publish(
        *this, {{.path = path, .fingerprint = fingerprint}},
        {.failed = [&failure](const FileToPublish&, const PublishFailure& why) { failure = why; }});
    if (failure) throw TransferError(failure->code, failure->message, failure->reply);
}

} // namespace zembrastel
