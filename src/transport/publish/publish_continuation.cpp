// Continues large uploads that were interrupted.
#include "transport/ftp_transport.h"
#include "transport/publish/interrupted_upload.h"
#include "transport/publish/publish_batch.h"

namespace zembrastel {

// Takes what an earlier batch sent of the file, if that was interrupted.
void Batch::takeBeginning(Item& item) {
    const auto beginning = traits.continues(transport.profile, item.file.path, item.file.fingerprint);
    if (!beginning) return;
    item.temporary = beginning->file.name;
    item.perhapsOnServer = true;
    item.confirmed = beginning->confirmed;
    item.part = beginning->most - beginning->confirmed;
    item.stage = Stage::interrupted;
}

void Batch::beginAnew(Item& item) {
    abandon(item);
    item.confirmed = item.part = 0;
    item.partTook = {};
    item.stage = Stage::toSend;
}

// False after too many interruptions.
bool Batch::interrupt(Item& item, const PublishFailure& failure) {
    item.stage = Stage::interrupted;
    item.problem = failure;
    item.partTook = Time::now() - item.partBegan;
    return ++item.breaks < maxAttempts;
}

bool Batch::mayContinue(const Item& item) const {
    return traits.appends() && item.size() >= transport.limits.worthContinuing;
}

void Batch::continueInterrupted(Item& item) {
    InterruptedUpload upload(transport, item, copyOf(item), staging);
    const auto confirmed = upload.confirm();
    if (upload.broken) {
        breakDown(*upload.broken);
        return;
    }
    barren = 0;
    if (!confirmed || *confirmed == 0) {
        beginAnew(item);
        if (item.sends >= maxAttempts) giveUp(item, item.problem);
        return;
    }
    const std::uint64_t gained = *confirmed - item.confirmed;
    if (gained > 0) item.breaks = 0;
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
