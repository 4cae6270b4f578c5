// Continues large uploads that were interrupted.
#include "transport/ftp_transport.h"
#include "transport/publish/interrupted_upload.h"
#include "transport/publish/publish_batch.h"

namespace zembrastel {

// Continues with what an earlier batch sent of the file before it was interrupted.
void Batch::resumeEarlierUpload(Item& item) {
    const auto beginning = traits.continues(transport.profile, item.file.path, item.file.fingerprint);
    if (!beginning) return;
    item.temporary = beginning->file.name;
    item.perhapsOnServer = true;
    item.confirmed = beginning->confirmed;
    item.part = beginning->most - beginning->confirmed;
    item.stage = Stage::interrupted;
}

void Batch::startOver(Item& item) {
    leaveForRemoval(item);
    item.confirmed = item.part = 0;
    item.partTook = {};
    item.stage = Stage::toSend;
}

// False after too many interruptions.
bool Batch::interrupt(Item& item, const PublishFailure& failure) {
    item.stage = Stage::interrupted;
    item.problem = failure;
    item.partTook = Time::now() - item.partBegan;
    return ++item.interruptions < maxAttempts;
}

bool Batch::mayContinue(const Item& item) const {
    return traits.appends() && item.size() >= transport.limits.worthContinuing;
}

void Batch::continueInterrupted(Item& item) {
    InterruptedUpload upload(transport, item, copyOf(item), staging);
    const auto confirmed = upload.confirm();
    if (upload.broken) {
        handleBroken(*upload.broken);
        return;
    }
    fruitless = 0;
    if (!confirmed || *confirmed == 0) {
        startOver(item);
        if (item.sends >= maxAttempts) failWithServer(item, item.problem);
        return;
    }
    const std::uint64_t gained = *confirmed - item.confirmed;
    if (gained > 0) item.interruptions = 0;
    item.confirmed = *confirmed;
    item.part = gained;
    item.stage = Stage::toSend;
    if (item.confirmed == item.size()) {
        item.part = 0;
        item.answers = {};
        item.stage = Stage::sent;
    }
}

} // namespace zembrastel
