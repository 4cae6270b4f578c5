// Reports when a retry is worthwhile: the machine has woken from sleep, or its network is back; and whether it has a
// network now.
//
// logind on the system bus reports waking; GIO's monitor (NetworkManager, or the kernel) reports the network. The
// object listens on a thread of its own, so neither its constructor nor its destructor waits for a service. A missing
// service is ignored. One object per process: GIO has one monitor, bound to the thread that first used it.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace zembrastel {

class WakeSignals {
public:
    // Calls `report` on that thread, once for all signals within half a second, and never after the destructor has
    // begun. It must not throw.
    explicit WakeSignals(std::function<void()> report);
    WakeSignals(const WakeSignals&) = delete;
    WakeSignals& operator=(const WakeSignals&) = delete;
    // Detaches the thread if a service blocks it for more than half a second.
    ~WakeSignals();

private:
    class Listener;

    std::shared_ptr<Listener> listener;
};

// False if this machine has no network through which it could reach the host: an address, or a name, which is not
// resolved. Sends nothing and does not block. Any thread.
[[nodiscard]] bool hasNetworkFor(const std::string& host);

} // namespace zembrastel
