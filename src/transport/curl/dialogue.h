// Conversations while they are put together, and what follows when one breaks off.
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

// One conversation with a server: its blocks, and what is done with the end of each.
class Dialogue {
public:
    using Ended = std::function<void(const BlockOutcome& outcome)>;

    // The transport is borrowed.
    Dialogue(const FTPTransport& used, ServerTraits::Login usedLogin) : login(usedLogin), transport(used) {}

    // A further block. `ended` is called unless the conversation broke off before or in it.
    void add(TransferBlock block, Ended ended, std::function<void()> begins = {});

    [[nodiscard]] bool isEmpty() const { return plan.blocks.empty(); }

    // A pause: `decide` is called once every block before it has ended, and false ends the conversation there. After it
    // a stop does what `atStop` says.
    void addPause(std::function<bool()> decide, TransferControl::AtStop atStop);

    // Works through the blocks by one curl. An end that is a failure of the server and not of a file is not passed on:
    // the conversation is over then, and broken. Throws what converse() throws.
    void hold(
        std::vector<int> files, const std::function<void(const ChildProcess&)>& look,
        std::optional<std::uint64_t> maxWritten = std::nullopt);

    std::optional<BlockOutcome> broken{};    // the end that is the server's failure
    FailureScope scope = FailureScope::file; // of it
    bool progressed = false;                 // a block came to an end
    bool over = false;                       // set by an `ended`: no further block is of use
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

// Whether another conversation follows one that broke off: servers and firewalls end long sessions, and what was
// learnt before counts. One object for one piece of work.
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
