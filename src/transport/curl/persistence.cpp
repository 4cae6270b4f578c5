#include "transport/curl/persistence.h"

#include "model/error.h"
#include "transport/curl/dialogue.h"

namespace zembrastel {

void Persistence::brokeOff(const Dialogue& dialogue, bool progressed) {
    constexpr int couldNotWrite = 23; // a listing without an end, or a full disk
    constexpr int timedOut = 28;
    constexpr int tlsFailed = 35;
    constexpr int mostBarren = 2;
    const int code = dialogue.broken->code;
    const bool tlsTooOld = dialogue.login == ServerTraits::Login::manyWithTls12 && code == tlsFailed;
    if ((dialogue.scope == FailureScope::furtherData || tlsTooOld) && traits.wasRefused(dialogue.login)) return;
    barren = progressed ? 0 : barren + 1;
    // TLS may have failed for a data connection alone.
    const bool isFinal =
        code == couldNotWrite || (!progressed && (code == timedOut || (isBeforeLogin(code) && code != tlsFailed)));
    if (isFinal || barren == mostBarren) throw SyncError(dialogue.broken->message);
}

} // namespace zembrastel
