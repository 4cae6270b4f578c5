// Builds conversations block by block, and decides what follows when one breaks off.
//
// Used on one thread.
#pragma once

#include "transport/curl/conversation.h"
#include "transport/publish/publish_decision.h"
#include "transport/server_traits.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace zembrastel {

struct FTPTransport;

// One conversation with a server: its blocks, and a function for the end of each.
class Dialogue {
public:
    using Ended = std::function<void(const BlockOutcome& outcome)>;

    // The transport is borrowed.
    Dialogue(const FTPTransport& used, ServerTraits::Login usedLogin) : login(usedLogin), transport(used) {}

    // Adds a block. `ended` is called unless the conversation breaks off before or during it.
    void add(TransferBlock block, Ended ended, std::function<void()> begins = {});

    [[nodiscard]] bool isEmpty() const { return plan.blocks.empty(); }

    // Adds a pause: `decide` is called when every block before it has ended, and false ends the conversation there.
    // `atStop` says what a stop does after the pause.
    void addPause(std::function<bool()> decide, TransferControl::AtStop atStop);

    // Runs one curl on the blocks. A failure of the server, not of a file, is not passed to `ended`: it ends the
    // conversation and is then `broken`. Throws what converse() throws.
    void run(
        std::vector<int> files, const std::function<void(const ChildProcess&)>& look,
        std::optional<std::uint64_t> maxWritten = std::nullopt);

    std::optional<BlockOutcome> broken{};    // the failure of the server that ended it
    FailureScope scope = FailureScope::file; // of that failure
    bool progressed = false;                 // a block has ended
    bool over = false;                       // set by an `ended` function: the remaining blocks are of no use
    const ServerTraits::Login login;

private:
    struct Step {
        std::function<bool()> begins;
        Ended ended;
        bool data;            // over a data connection
        std::size_t commands; // sent one after another, if the block has nothing else
        bool listing;
    };

    void setTimer(TransferBlock& block) const;
    [[nodiscard]] DataConnection connectionOf(std::size_t block) const;
    bool take(std::size_t block, const BlockOutcome& outcome);
    void learnReplyTime(std::size_t block, std::chrono::nanoseconds took) const;

    const FTPTransport& transport;
    TransferPlan plan{};
    std::vector<Step> steps{};
};

// Decides whether another conversation follows one that broke off: servers and firewalls end long sessions, and the
// results so far count. One object for one piece of work.
class Persistence {
public:
    // The traits are borrowed.
    explicit Persistence(ServerTraits& learnt) : traits(learnt) {}

    // Takes note of a broken dialogue. `progressed` is true if it, or the part of a file that it moved, brought the
    // work further. Returns if another conversation may succeed; otherwise throws SyncError with curl's words. A server
    // that cannot be reached, or refuses the login, is not tried again.
    void brokeOff(const Dialogue& dialogue, bool progressed);

private:
    ServerTraits& traits;
    int fruitless = 0; // conversations in a row without progress
};

} // namespace zembrastel
