#include "transport/publish/publish_queries.h"

#include "transport/ftp_transport.h"
#include "transport/publish/server_answers.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace zembrastel {
namespace {

using Presence = RemoteFacts::Presence;
using Support = ServerTraits::Support;

// A listing takes as many round trips as this number of commands.
constexpr std::size_t listingRoundTrips = 6;

// STAT takes about as long as the two commands for one file.
constexpr std::size_t minFilesForStat = 3;

// A conversation takes as long as the queries of this number of files.
constexpr std::size_t minFilesForTrial = 32;

// A listing that took longer counts as this long: over such a line, many queries would not be quicker either.
using Time = std::chrono::nanoseconds;
constexpr Time longestListing = std::chrono::milliseconds(50);

// The assumed time of a listing with TLS before one was measured.
constexpr Time firstProtectedListing = std::chrono::milliseconds(20);

bool isNew(const Item* item) { return std::holds_alternative<KnownAbsent>(item->lastSeen); }

TransferBlock listingOf(const std::string& folder) {
    return {.path = folder, .directory = true, .options = {{"request", "MLSD"}, {"ftp-method", "singlecwd"}}};
}

// With hidden files, since the names of copies begin with a dot.
TransferBlock statOf(const std::string& folder) { return commandsIn(folder, {"STAT -a ."}); }

std::vector<std::string> commandsAbout(const std::string& name, Support mlst) {
    std::vector<std::string> commands;
    if (mlst != Support::missing) commands.push_back("MLST " + name);
    if (mlst != Support::works) commands.insert(commands.end(), {"MDTM " + name, "SIZE " + name});
    return commands;
}

// The facts in the replies to these commands; the first one has this number. Learns whether the server knows MLST.
RemoteFacts readFacts(const Replies& replies, std::size_t number, Support asked, ServerTraits& traits) {
    if (asked == Support::missing) return replies.datesAndSizes(number);
    const auto facts = replies.facts(number);
    if (asked == Support::works) return facts;
    const bool useful = facts.presence == Presence::present && facts.size && facts.modified;
    if (useful) traits.learnMlst(Support::works);
    if (facts.presence == Presence::absent || useful) return facts;
    if (facts.presence == Presence::present || replies.isUnknownCommand(number)) traits.learnMlst(Support::missing);
    return replies.datesAndSizes(number + 1);
}

} // namespace

PublishQueries::PublishQueries(const FTPTransport& used) : transport(used), traits(*used.traits) {}

std::size_t PublishQueries::commandsForEach() const { return traits.mlst() == Support::missing ? 2 : 1; }

void PublishQueries::query(Dialogue& dialogue, const Items& items) {
    const auto folders = byFolder(items);
    if (folders.size() > 1) {
        queryCopies(dialogue, {items});
        queryLiveFiles(dialogue, items);
        return;
    }
    for (const auto& [folder, within] : folders) {
        auto queries = queriesOf(within, false);
        // The live files come last, so that these answers are as new as possible when the renames follow.
        std::ranges::move(queriesOf(within, true), std::back_inserter(queries));
        queryEach(dialogue, folder, queries);
        queryByStat(dialogue, folder, within);
        queryByListing(dialogue, folder, within);
    }
}

void PublishQueries::queryCopies(Dialogue& dialogue, const std::vector<Items>& parts) {
    std::map<std::string, std::vector<Query>> folders;
    for (const auto& part : parts) {
        for (const auto& [folder, within] : byFolder(part)) {
            std::ranges::move(queriesOf(within, false), std::back_inserter(folders[folder]));
        }
    }
    for (const auto& [folder, queries] : folders) queryEach(dialogue, folder, queries);
}

void PublishQueries::queryLiveFiles(Dialogue& dialogue, const Items& part) {
    for (const auto& [folder, within] : byFolder(part)) {
        queryEach(dialogue, folder, queriesOf(within, true));
        queryByStat(dialogue, folder, within);
        queryByListing(dialogue, folder, within);
    }
}

// For those files of one folder that are queried one by one: their copies, or the live files.
std::vector<PublishQueries::Query> PublishQueries::queriesOf(const Items& within, bool live) {
    std::vector<Query> queries;
    const Items byStat = live ? shownByStat(within) : Items();
    for (auto* item : within) {
        if (!needsQuery(*item, Way::single, 2 * within.size()) || std::ranges::count(byStat, item) > 0) continue;
        auto& answer = item->by(Way::single);
        if (live) {
            queries.push_back({item->name, true, [&answer](const RemoteFacts& facts) { answer.live = facts; }});
        } else if (!answer.copy) {
            queries.push_back({item->temporary, false, [&answer](const RemoteFacts& facts) { answer.copy = facts; }});
        }
    }
    return queries;
}

void PublishQueries::queryRenamed(Dialogue& dialogue, const Items& renamed, const Answered& then) {
    for (const auto& [folder, within] : byFolder(renamed)) {
        if (firstWay(within.size()) == Way::listing) {
            auto block = listingOf(folder);
            block.atStop = TransferControl::AtStop::lastsOut;
            dialogue.add(std::move(block), [within, then](const BlockOutcome& outcome) {
                const Listing listing(outcome);
                for (auto* item : within) item->after = listing.find(item->name);
                then(within);
            });
            continue;
        }
        queryEachRenamed(dialogue, folder, within, then);
    }
}

void PublishQueries::queryEachRenamed(
    Dialogue& dialogue, const std::string& folder, const Items& within, const Answered& then) {
    constexpr auto lastsOut = TransferControl::AtStop::lastsOut;
    const Items byStat = shownByStat(within);
    std::vector<Query> queries;
    for (auto* item : within) {
        if (std::ranges::count(byStat, item) == 0)
            queries.push_back({item->name, false, [item](const RemoteFacts& facts) { item->after = facts; }});
    }
    if (byStat.empty()) {
        queryEach(dialogue, folder, queries, lastsOut, [then, within] { then(within); });
        tryStat(dialogue, folder, within);
        return;
    }
    queryEach(dialogue, folder, queries, lastsOut);
    auto block = statOf(folder);
    block.atStop = lastsOut;
    dialogue.add(std::move(block), [this, within, byStat, then](const BlockOutcome& outcome) {
        const StatusListing listing(outcome);
        for (auto* item : byStat) {
            item->after = listing.find(item->name);
            if (item->after.presence == Presence::present && item->after.size == item->size()) continue;
            if (item->stage == Item::Stage::renamed) item->stage = Item::Stage::renaming; // to be queried on its own
            item->bothWays = true;
        }
        then(within);
    });
}

bool PublishQueries::shouldTryFewFirst(const Items& files) const {
    return mayTryStat() && std::ranges::count_if(files, isNew) > static_cast<std::ptrdiff_t>(minFilesForTrial);
}

bool PublishQueries::mayTryStat() const { return !mayList() && traits.statusListing() == Support::untried; }

// Finds out whether STAT shows what is there. Until then it counts as missing, so that a server that ends the
// connection at this command gets it only once.
void PublishQueries::tryStat(Dialogue& dialogue, const std::string& folder, const Items& within) {
    if (!mayTryStat() || within.size() < minFilesForStat) return;
    auto block = statOf(folder);
    block.atStop = TransferControl::AtStop::lastsOut;
    dialogue.add(
        std::move(block),
        [this, within](const BlockOutcome& outcome) {
            const StatusListing listing(outcome);
            const bool shown = std::ranges::all_of(within, [&](const Item* item) {
                return item->stage != Item::Stage::done || listing.find(item->name).size == item->size();
            });
            if (shown) traits.learnStatusListing(Support::works);
        },
        [this] { traits.learnStatusListing(Support::missing); });
}

// New files of one folder, if there are enough for a STAT of the folder: it shows whether a file exists, but not its
// date.
Items PublishQueries::shownByStat(const Items& within) const {
    Items shown;
    if (mayList() || traits.statusListing() != Support::works) return shown;
    std::ranges::copy_if(within, std::back_inserter(shown), [](const Item* item) {
        return !item->bothWays && item->stage != Item::Stage::renaming && isNew(item);
    });
    return shown.size() < minFilesForStat ? Items() : shown;
}

// If STAT does not show the copies, it may leave out other files, too.
void PublishQueries::queryByStat(Dialogue& dialogue, const std::string& folder, const Items& within) {
    const Items listed = shownByStat(within);
    if (listed.empty()) return;
    dialogue.add(statOf(folder), [this, listed](const BlockOutcome& outcome) {
        const StatusListing found(outcome);
        noteAnswerAge(outcome, listed.size());
        for (auto* item : listed) {
            const auto copy = found.find(item->temporary);
            const bool shown = copy.presence == Presence::present && copy.size == item->expected();
            const auto live = found.find(item->name);
            if (shown && live.presence == Presence::absent) {
                item->by(Way::single).live = live;
            } else {
                item->bothWays = true; // in the next conversation, one by one
                if (!shown && item->stage == Item::Stage::sent) traits.learnStatusListing(Support::missing);
            }
        }
    });
}

bool PublishQueries::isAnswered(Item& item) const {
    const bool single = item.by(Way::single).isComplete();
    const bool listing = item.by(Way::listing).isComplete();
    if (!single && !listing) return false;
    if ((single && (listing || !mayList())) || isCertain(item)) return true;
    item.bothWays = true;
    item.forgetLive();
    return false;
}

bool PublishQueries::mayList() const { return traits.hasMLSD() && traits.login() != ServerTraits::Login::oneTransfer; }

Way PublishQueries::firstWay(std::size_t queries) const {
    if (!mayList()) return Way::single;
    if (!traits.confirmsSizes()) return Way::listing;
    const std::size_t roundTrips = traits.mlst() == Support::missing ? 2 * queries : queries;
    return roundTrips < listingRoundTrips || isQuickerThanListing(roundTrips) ? Way::single : Way::listing;
}

// Near the server, a listing of a large folder or with TLS takes longer than many single queries.
bool PublishQueries::isQuickerThanListing(std::size_t roundTrips) const {
    const auto reply = traits.replyTime();
    const auto first = transport.profile.transport == TransferProtocol::ftp ? Time(0) : firstProtectedListing;
    return reply && *reply * roundTrips < std::min(traits.listingTime().value_or(first), longestListing);
}

bool PublishQueries::needsQuery(Item& item, Way way, std::size_t queries) const {
    if (item.by(way).isComplete()) return false;
    if (item.bothWays) return way == Way::single || mayList();
    return way == firstWay(queries);
}

// True if one way of asking is enough. A listing without a file that was there proves nothing: it may have been cut.
bool PublishQueries::isCertain(Item& item) {
    combine(item);
    const bool proven =
        item.by(Way::single).isComplete() || item.live.presence == Presence::present
        || (item.live.presence == Presence::absent && !std::holds_alternative<ServerVersion>(item.lastSeen));
    return proven && item.live.presence != Presence::unknown
           && (isLive(item) || verdict(item.expected(), item.copy, item.lastSeen, item.live) == Verdict::publish);
}

// The first of several answers in one block may be as old as the block.
void PublishQueries::noteAnswerAge(const BlockOutcome& outcome, std::size_t liveFiles) {
    if (liveFiles == 0) return;
    const auto oldest = liveFiles == 1 ? outcome.notEndedAt : outcome.notBegunAt;
    answered = answered ? std::min(*answered, oldest) : oldest;
}

// With its own commands, which take half of the round trips of curl's "head".
void PublishQueries::queryEach(
    Dialogue& dialogue, const std::string& folder, const std::vector<Query>& queries, TransferControl::AtStop atStop,
    const std::function<void()>& then) {
    if (queries.empty()) return;
    const Support mlst = traits.mlst();
    std::vector<std::string> commands;
    if (mlst != Support::works) commands.emplace_back("TYPE I"); // some servers report no sizes in text mode
    const std::size_t before = commands.size();
    for (const auto& each : queries) {
        for (auto& command : commandsAbout(each.name, mlst)) commands.push_back(std::move(command));
    }
    const std::size_t count = commands.size() - before;
    auto block = commandsIn(folder, commands);
    block.atStop = atStop;
    dialogue.add(std::move(block), [this, queries, mlst, count, then](const BlockOutcome& outcome) {
        noteAnswerAge(outcome, static_cast<std::size_t>(std::ranges::count(queries, true, &Query::live)));
        const Replies replies(outcome, count);
        const std::size_t each = count / queries.size();
        for (std::size_t i = 0; i < queries.size(); ++i) {
            queries[i].take(readFacts(replies, each * i, mlst, traits));
        }
        if (then) then();
    });
}

// For those of the files that are queried by a listing.
void PublishQueries::queryByListing(Dialogue& dialogue, const std::string& folder, const Items& within) {
    Items listed;
    std::ranges::copy_if(within, std::back_inserter(listed), [&](Item* item) {
        return needsQuery(*item, Way::listing, 2 * within.size());
    });
    if (listed.empty()) return;
    dialogue.add(listingOf(folder), [this, listed](const BlockOutcome& outcome) {
        const Listing found(outcome);
        noteAnswerAge(outcome, listed.size());
        if (!found.isReadable() && !found.isCut()) {
            traits.lacksMLSD();
            traits.learnFromFailedMLSD(outcome.reply);
        }
        for (auto* item : listed) {
            const auto copy = found.find(item->temporary);
            item->by(Way::listing) = {.copy = copy, .live = found.find(item->name)};
            // A listing without the copy that was just sent may leave out other files, too.
            if (item->stage == Item::Stage::sent && copy.presence == Presence::absent) {
                item->by(Way::listing).live = RemoteFacts{};
            }
        }
    });
}

} // namespace zembrastel
