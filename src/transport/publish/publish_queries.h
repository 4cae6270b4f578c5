// Queries a server about the copies that were sent, and about the live files that they will replace.
//
// Borrows the transport; used on one thread.
#pragma once

#include "transport/curl/dialogue.h"
#include "transport/publish/publish_item.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class PublishQueries {
public:
    explicit PublishQueries(const FTPTransport& used);

    // Adds blocks that query copies and live files. After the conversation, the answers are in the items. Several files
    // of one folder are queried by a listing, unless single queries are known to be quicker.
    void query(Dialogue& dialogue, const Items& items);

    // The same in two steps. Answers about copies stay valid, so they can be queried first, for several groups.
    void queryCopies(Dialogue& dialogue, const std::vector<Items>& parts);
    void queryLiveFiles(Dialogue& dialogue, const Items& part);

    // Queries the live files after their rename: the answers are in Item::after. `then` is called during the
    // conversation, with the files of one folder. A stop lets these blocks finish.
    using Answered = std::function<void(const Items& items)>;
    void queryRenamed(Dialogue& dialogue, const Items& renamed, const Answered& then);

    // True if the answers are enough for a decision. If one way of asking was not enough, the next conversation uses
    // both.
    [[nodiscard]] bool isAnswered(Item& item) const;

    // True if a first conversation about a few of these files will show how to query the others more quickly.
    [[nodiscard]] bool shouldTryFewFirst(const Items& files) const;

    // The number of commands that query one live file.
    [[nodiscard]] std::size_t commandsForEach() const;

    // The time since boot at which the oldest answer about a live file was given, of those since this was cleared.
    std::optional<std::chrono::nanoseconds> answered;

private:
    void noteAnswerAge(const BlockOutcome& outcome, std::size_t liveFiles);

    struct Query {
        std::string name;
        bool live; // before it is replaced
        std::function<void(const RemoteFacts& facts)> take;
    };

    [[nodiscard]] bool mayList() const;
    [[nodiscard]] Way firstWay(std::size_t queries) const;
    [[nodiscard]] bool isQuickerThanListing(std::size_t roundTrips) const;
    [[nodiscard]] bool needsQuery(Item& item, Way way, std::size_t queries) const;
    [[nodiscard]] static bool isCertain(Item& item);
    [[nodiscard]] std::vector<Query> queriesOf(const Items& within, bool live);
    void queryEach(
        Dialogue& dialogue, const std::string& folder, const std::vector<Query>& queries,
        TransferControl::AtStop atStop = TransferControl::AtStop::ends, const std::function<void()>& then = {});
    void queryByStat(Dialogue& dialogue, const std::string& folder, const Items& within);
    void queryEachRenamed(Dialogue& dialogue, const std::string& folder, const Items& within, const Answered& then);
    void tryStat(Dialogue& dialogue, const std::string& folder, const Items& within);
    [[nodiscard]] bool mayTryStat() const;
    [[nodiscard]] Items shownByStat(const Items& within) const;
    void queryByListing(Dialogue& dialogue, const std::string& folder, const Items& within);

    const FTPTransport& transport;
    ServerTraits& traits;
};

} // namespace zembrastel
