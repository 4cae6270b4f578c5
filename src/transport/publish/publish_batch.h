// Files that are published together: sent one after another, verified, and put in place within milliseconds.
//
// Identity; lives for one publication, and is used on its thread. It borrows the files, the transport and the events.
#pragma once

#include "platform/private_folder.h"
#include "transport/curl/dialogue.h"
#include "transport/publish/publish_inquiry.h"
#include "transport/publish/publish_item.h"
#include "transport/publish/publishing.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace zembrastel {

class ChildProcess;

class Batch {
public:
    Batch(const FTPTransport& used, std::span<const FileToPublish> files, const PublishEvents& called);
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    // Notes what may have stayed on the server: to be continued in a later batch, or to be removed.
    ~Batch();

    enum class End {
        complete,     // each file has come to an end of its own
        paused,       // a large file has had its turn: call again
        serverFailed, // which one file was told
    };

    // Works until the end, or with `othersWait` until a file that goes in parts has had its turn. Throws Cancelled and
    // what the events throw.
    [[nodiscard]] End run(bool othersWait);

private:
    using Time = std::chrono::steady_clock;

    // The number of sends, of renames and of interruptions of one file after which it counts as failed.
    static constexpr int maxAttempts = 3;

    // Files that are sent before they go live together, or, over a slow line, soon after one another.
    static constexpr std::size_t groupLength = 64;

    // Files of a conversation that is to show how to ask about many.
    static constexpr std::size_t few = 4;

    using Stage = Item::Stage;

    [[nodiscard]] Items all(std::initializer_list<Stage> stages);

    void stage(Item& item);
    void takeBeginning(Item& item);
    void sendAndAsk();
    void planToSend(Dialogue& dialogue);
    void planToPublish(Dialogue& dialogue, const Items& group, const Items& next);
    static void mayBeSent(const Items& group);
    void beginAnew(Item& item);
    void send(Dialogue& dialogue, Item& item);
    [[nodiscard]] bool goesInParts(const Item& item) const;
    void sendingBegins(Item& item);
    void sendingEnds(Item& item, const BlockOutcome& outcome);
    [[nodiscard]] bool isFolderThere(const Item& item) const;
    [[nodiscard]] int copyOf(const Item& item) const { return stagedCopies.at(item.number).get(); }
    void continueInterrupted(Item& item);
    void decide();
    void act(Item& item, Verdict found);
    void continueWithNextPart(Item& item);
    void sendAgain(Item& item, const std::string& message);

    [[nodiscard]] bool mayPublish(const Items& group);
    void announce(const Items& group);
    [[nodiscard]] bool isOutdated(const Items& group);
    [[nodiscard]] std::size_t mostAtOnce() const;
    [[nodiscard]] std::size_t commandsToRename() const { return traits.changesModes() ? 3 : 2; }
    void addRenames(Dialogue& dialogue, const Items& chosen);
    void askAfterwards(Dialogue& dialogue, const Items& chosen);
    void rename(Dialogue& dialogue, const std::string& folder, const Items& within);
    [[nodiscard]] std::vector<TransferOption> renamingOf(const Item& item) const;
    void settleRenamed(const Items& chosen);
    void settle(Item& item);

    void finish(Item& item, const RemoteFacts& facts);
    void fail(Item& item, const PublishFailure& failure);
    void giveUp(Item& item, PublishFailure failure);
    void abandon(Item& item);
    void withdraw(Item& item);
    void hold(Dialogue& dialogue);
    void look(const ChildProcess& curl) const;
    void breakDown(const Dialogue& dialogue);
    [[nodiscard]] bool mayContinue(const Item& item) const;
    [[nodiscard]] bool interrupt(Item& item, const PublishFailure& failure);

    const FTPTransport& transport;
    ServerTraits& traits;
    const PublishEvents& events;
    const PrivateFolder staging;
    std::vector<Descriptor> stagedCopies;
    Descriptor stagedPart; // of the file that goes in parts; after the others among the files handed to curl
    std::vector<Item> items;
    Items planned;           // to be sent in the conversation under way
    Item* sending = nullptr; // now
    Inquiry inquiry;
    std::set<std::string> oneByOne; // folders in which a renaming was refused
    bool setsModes = false;         // files need their permissions, which are known after the answers alone
    int timesOutdated = 0;
    int barren = 0; // conversations in which nothing was learnt, since one in which something was
    bool staged = false;
    bool goesOn = true;
};

} // namespace zembrastel
