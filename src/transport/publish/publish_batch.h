// Files that are published together: sent one after another, verified, and renamed within milliseconds.
//
// An object lives for one publication and is used on its thread. It borrows the files, the transport and the events.
#pragma once

#include "platform/private_folder.h"
#include "transport/curl/dialogue.h"
#include "transport/publish/publish_item.h"
#include "transport/publish/publish_queries.h"
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
    // Notes files that may have stayed on the server: a later batch continues or removes them.
    ~Batch();

    enum class End {
        complete,     // each file was published, failed or was not replaced
        paused,       // a large file has used its turn: call run() again
        serverFailed, // which was reported for one file
    };

    // Works until all files are done. With `othersWait` it also returns when a file that is sent in parts has used its
    // turn. Throws Cancelled and what the events throw.
    [[nodiscard]] End run(bool othersWait);

private:
    using Time = std::chrono::steady_clock;

    // A file fails after this number of sends, of renames, or of interruptions without progress.
    static constexpr int maxAttempts = 3;

    // The number of files that are sent and then go live together, or, over a slow line, soon after one another.
    static constexpr std::size_t groupLength = 64;

    // The number of files in a conversation that finds out how to query many.
    static constexpr std::size_t trialLength = 4;

    using Stage = Item::Stage;

    [[nodiscard]] Items all(std::initializer_list<Stage> stages);

    void stage(Item& item);
    void resumeEarlierUpload(Item& item);
    void sendAndAsk();
    void planToSend(Dialogue& dialogue);
    void planToPublish(Dialogue& dialogue, const Items& group, const Items& next);
    static void markPerhapsOnServer(const Items& group);
    void startOver(Item& item);
    void send(Dialogue& dialogue, Item& item);
    [[nodiscard]] bool goesInParts(const Item& item) const;
    void sendingBegins(Item& item);
    void sendingEnds(Item& item, const BlockOutcome& outcome);
    [[nodiscard]] bool isFolderThere(const Item& item) const;
    [[nodiscard]] int copyOf(const Item& item) const { return stagedCopies.at(item.number).get(); }
    void continueInterrupted(Item& item);
    void decide();
    void apply(Item& item, Verdict found);
    void continueWithNextPart(Item& item);
    void sendAgain(Item& item, const std::string& message);

    [[nodiscard]] bool mayPublish(const Items& group);
    void announce(const Items& group);
    [[nodiscard]] bool isOutdated(const Items& group);
    [[nodiscard]] std::size_t maxRenamesAtOnce() const;
    [[nodiscard]] std::size_t commandsToRename() const { return traits.changesModes() ? 3 : 2; }
    void addRenames(Dialogue& dialogue, const Items& chosen);
    void verifyRenames(Dialogue& dialogue, const Items& chosen);
    void rename(Dialogue& dialogue, const std::string& folder, const Items& within);
    [[nodiscard]] std::vector<TransferOption> renamingOf(const Item& item) const;
    void settleRenamed(const Items& chosen);
    void settle(Item& item);

    void finish(Item& item, const RemoteFacts& facts);
    void fail(Item& item, const PublishFailure& failure);
    void failWithServer(Item& item, PublishFailure failure);
    void leaveForRemoval(Item& item);
    void forgetUnusedName(Item& item);
    void converse(Dialogue& dialogue);
    void reportProgress(const ChildProcess& curl) const;
    void handleBroken(const Dialogue& dialogue);
    [[nodiscard]] bool mayContinue(const Item& item) const;
    [[nodiscard]] bool interrupt(Item& item, const PublishFailure& failure);

    const FTPTransport& transport;
    ServerTraits& traits;
    const PublishEvents& events;
    const PrivateFolder staging;
    std::vector<Descriptor> stagedCopies;
    Descriptor stagedPart; // of the file that is sent in parts; the last of the files that curl gets
    std::vector<Item> items;
    Items planned;           // sent in this conversation
    Item* sending = nullptr; // at this moment
    PublishQueries queries;
    std::set<std::string> oneByOne; // folders in which a rename was refused
    bool setsModes = false;         // copies need other permissions, known only after the answers
    int timesOutdated = 0;
    int fruitless = 0; // conversations in a row without progress
    bool staged = false;
    bool goesOn = true;
};

} // namespace zembrastel
