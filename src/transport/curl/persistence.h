// Whether another conversation follows one that broke off: servers and firewalls end long sessions, and what was
// learnt before counts.
//
// Used on one thread, for one piece of work.
#pragma once

namespace zembrastel {

class Dialogue;
class ServerTraits;

class Persistence {
public:
    // The traits are borrowed.
    explicit Persistence(ServerTraits& learnt) : traits(learnt) {}

    // Takes note of a dialogue that is broken. Did it, or the part of a file that it moved, bring the work further?
    // Returns when another conversation may get further still; otherwise throws SyncError in curl's words. A server
    // that cannot be reached, or refuses the login, is not asked again.
    void brokeOff(const Dialogue& dialogue, bool progressed);

private:
    ServerTraits& traits;
    int barren = 0; // conversations without progress, since the last one with some
};

} // namespace zembrastel
