#include "transport/curl/persistence.h"

#include "model/error.h"
#include "transport/curl/dialogue.h"

namespace zembrastel {

void Persistence::brokeOff(const Dialogue& dialogue, bool progressed) {
    constexpr int maxBarren = 2;
    const CurlCode code = dialogue.broken->code;
    const bool tlsTooOld = dialogue.login == ServerTraits::Login::manyWithTls12 && code == CurlCode::tlsFailed;
    if ((dialogue.scope == FailureScope::furtherData || tlsTooOld) && traits.wasRefused(dialogue.login)) return;
    barren = progressed ? 0 : barren + 1;
    // A write fails for a listing without an end, or on a full disk. TLS may have failed for a data connection alone.
    const bool isFinal =
        code == CurlCode::writeFailed
        || (!progressed && (code == CurlCode::timedOut || (isBeforeLogin(code) && code != CurlCode::tlsFailed)));
    if (isFinal || barren == maxBarren) throw TransferError(code, dialogue.broken->message, dialogue.broken->reply);
}

} // namespace zembrastel
