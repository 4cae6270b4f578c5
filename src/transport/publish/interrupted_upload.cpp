#include "transport/publish/interrupted_upload.h"

#include "platform/child_process.h"
#include "transport/ftp_transport.h"
#include "transport/publish/server_answers.h"
#include "transport/publish/staged_copy.h"

#include <charconv>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {

InterruptedUpload::InterruptedUpload(
    const FTPTransport& used, const Item& upload, int stagedCopy, const PrivateFolder& folder)
    : transport(used), item(upload), copy(stagedCopy), staging(folder) {}

std::optional<std::uint64_t> InterruptedUpload::confirm() {
    const auto size = sizeOnServer();
    if (!size || *size < item.confirmed || *size > item.expected()) return std::nullopt;
    return *size == item.confirmed || isOurs(*size) ? size : std::nullopt;
}

std::optional<std::uint64_t> InterruptedUpload::sizeOnServer() {
    std::optional<std::uint64_t> size;
    Dialogue dialogue(transport, transport.traits->login());
    dialogue.add(commandsIn(item.folder, {"TYPE I", "SIZE " + item.temporary}), [&](const BlockOutcome& outcome) {
        const Replies replies(outcome, 2);
        const auto digits = replies.after("213", 1).value_or("");
        std::uint64_t bytes = 0;
        if (std::from_chars(digits.data(), digits.data() + digits.size(), bytes).ec == std::errc()) size = bytes;
    });
    run(std::move(dialogue), {});
    return size;
}

bool InterruptedUpload::isOurs(std::uint64_t size) {
    constexpr const char* name = "fetched";
    staging.folder().remove(name);
    const Descriptor fetched = staging.folder().create(name, S_IRUSR | S_IWUSR);
    bool complete = false;
    Dialogue dialogue(transport, transport.traits->login());
    dialogue.add(
        {.path = childPath(item.folder, item.temporary),
         .options = {{"continue-at", std::to_string(item.confirmed)}, {"output", ChildProcess::filePathOf(0)}}},
        [&complete](const BlockOutcome& outcome) { complete = outcome.succeeded(); });
    run(std::move(dialogue), {fetched.get()});
    const bool same = complete && isPartOf(copy, item.confirmed, size - item.confirmed, fetched.get());
    staging.folder().remove(name);
    return same;
}

void InterruptedUpload::run(Dialogue dialogue, std::vector<int> files) {
    dialogue.run(std::move(files), {});
    if (dialogue.broken) broken.emplace(std::move(dialogue));
}

} // namespace zembrastel
