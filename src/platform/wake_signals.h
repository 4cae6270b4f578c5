// Tells when it is worth trying again what failed: the machine has woken from sleep, or its network is back.
//
// Waking is told by logind on the system bus, the network by GIO's monitor (NetworkManager's word, or the kernel's
// own). Both are asked on a thread of its own, so that neither making nor destroying the object waits for a service.
// Where one is missing it is never heard of. One object a process: GIO has one monitor, which stays with the thread
// that asked for it first.
#pragma once

#include <functional>
#include <memory>

namespace zembrastel {

class WakeSignals {
public:
    // Calls `tell` on the thread of its own, once for what comes within half a second, and not once the destructor has
    // begun. It must not throw.
    explicit WakeSignals(std::function<void()> tell);
    WakeSignals(const WakeSignals&) = delete;
    WakeSignals& operator=(const WakeSignals&) = delete;
    // Lets the thread go where a service keeps it for more than half a second.
    ~WakeSignals();

private:
    class Listener;

    std::shared_ptr<Listener> listener;
};

} // namespace zembrastel
