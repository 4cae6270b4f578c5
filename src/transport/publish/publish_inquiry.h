// Asks a server what it has of files that were sent, and of the live files that they are to replace.
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

class Inquiry {
public:
    explicit Inquiry(const FTPTransport& used);

    // Adds blocks that ask about copies and live files; the answers are in the items when the conversation was held.
    // Several files of one folder are asked about by a listing, unless single questions are known to be quicker.
    void ask(Dialogue& dialogue, const Items& items);

    // The same for several such calls, beginning with the copies, which do not have to be asked about so late.
    void askAboutCopies(Dialogue& dialogue, const std::vector<Items>& parts);
    void askAboutLive(Dialogue& dialogue, const Items& part);

    // The same about live files alone, after their renaming: the answers are in Item::after. `then` is called in the
    // conversation, with the files of one folder. A stop lets these blocks finish.
    using Answered = std::function<void(const Items& items)>;
    void askAfter(Dialogue& dialogue, const Items& renamed, const Answered& then);

    // True if the item was asked about and its answers are enough for a decision. If one way of asking was not enough,
    // both are used the next time, in one conversation.
    [[nodiscard]] bool isAnswered(Item& item) const;

    // True if a first conversation about a few of these files will show how to ask about the others more quickly.
    [[nodiscard]] bool learnsFromFew(const Items& files) const;

    // The commands that ask about one live file.
    [[nodiscard]] std::size_t commandsForEach() const;

    // No answer about a live file is older than this, in time since boot: of those that came since it was cleared.
    std::optional<std::chrono::nanoseconds> answered;

private:
    void date(const BlockOutcome& outcome, std::size_t liveFiles);

    struct Question {
        std::string name;
        bool live; // before it is replaced
        std::function<void(const RemoteFacts& facts)> take;
    };

    [[nodiscard]] bool mayList() const;
    [[nodiscard]] Way firstWay(std::size_t questions) const;
    [[nodiscard]] bool isQuickerThanListing(std::size_t roundTrips) const;
    [[nodiscard]] bool asks(Item& item, Way way, std::size_t questions) const;
    [[nodiscard]] static bool isCertain(Item& item);
    [[nodiscard]] std::vector<Question> questionsOf(const Items& within, bool live);
    void askSingly(
        Dialogue& dialogue, const std::string& folder, const std::vector<Question>& questions,
        TransferControl::AtStop atStop = TransferControl::AtStop::ends, const std::function<void()>& then = {});
    void askByStatus(Dialogue& dialogue, const std::string& folder, const Items& within);
    void askEachAfter(Dialogue& dialogue, const std::string& folder, const Items& within, const Answered& then);
    void tryStatus(Dialogue& dialogue, const std::string& folder, const Items& within);
    [[nodiscard]] bool mayTryStatus() const;
    [[nodiscard]] Items shownByStatus(const Items& within) const;
    void askByListing(Dialogue& dialogue, const std::string& folder, const Items& within);

    const FTPTransport& transport;
    ServerTraits& traits;
};

} // namespace zembrastel
