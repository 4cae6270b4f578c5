#include "transport/publish/publish_inquiry.h"

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

// A listing takes as many round trips as so many commands.
constexpr std::size_t roundTripsOfListing = 6;

// A status takes about as long as two commands, which is what one file takes.
constexpr std::size_t leastForStatus = 3;

// A conversation takes as long as the questions about so many files.
constexpr std::size_t leastToLearnFor = 32;

// A listing that took longer than this counts as this long: many questions would not get quicker answers over its line.
using Time = std::chrono::nanoseconds;
constexpr Time longestListing = std::chrono::milliseconds(50);

// What is assumed of a listing with TLS before one was measured.
constexpr Time firstProtectedListing = std::chrono::milliseconds(20);

bool isNew(const Item* item) { return std::holds_alternative<KnownAbsent>(item->lastSeen); }

TransferBlock listingOf(const std::string& folder) {
    return {.path = folder, .directory = true, .options = {{"request", "MLSD"}, {"ftp-method", "singlecwd"}}};
}

// With the hidden files, as the names of copies are.
TransferBlock statusOf(const std::string& folder) { return commandsIn(folder, {"STAT -a ."}); }

std::vector<std::string> commandsAbout(const std::string& name, Support mlst) {
    std::vector<std::string> commands;
    if (mlst != Support::missing) commands.push_back("MLST " + name);
    if (mlst != Support::works) commands.insert(commands.end(), {"MDTM " + name, "SIZE " + name});
    return commands;
}

// What the replies to these commands say, of which the first has this number; and whether the server knows MLST.
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

Inquiry::Inquiry(const FTPTransport& used) : transport(used), traits(*used.traits) {}

std::size_t Inquiry::commandsForEach() const { return traits.mlst() == Support::missing ? 2 : 1; }

void Inquiry::ask(Dialogue& dialogue, const Items& items) {
    const auto folders = byFolder(items);
    if (folders.size() > 1) {
        askAboutCopies(dialogue, {items});
        askAboutLive(dialogue, items);
        return;
    }
    for (const auto& [folder, within] : folders) {
        auto questions = questionsOf(within, false);
        // The live files come last, so that these answers are as fresh as can be when the renames follow.
        std::ranges::move(questionsOf(within, true), std::back_inserter(questions));
        askSingly(dialogue, folder, questions);
        askByStatus(dialogue, folder, within);
        askByListing(dialogue, folder, within);
    }
}

void Inquiry::askAboutCopies(Dialogue& dialogue, const std::vector<Items>& parts) {
    std::map<std::string, std::vector<Question>> folders;
    for (const auto& part : parts) {
        for (const auto& [folder, within] : byFolder(part)) {
            std::ranges::move(questionsOf(within, false), std::back_inserter(folders[folder]));
        }
    }
    for (const auto& [folder, questions] : folders) askSingly(dialogue, folder, questions);
}

void Inquiry::askAboutLive(Dialogue& dialogue, const Items& part) {
    for (const auto& [folder, within] : byFolder(part)) {
        askSingly(dialogue, folder, questionsOf(within, true));
        askByStatus(dialogue, folder, within);
        askByListing(dialogue, folder, within);
    }
}

// About those files of one folder that are to be asked about on their own: their copies, or the live ones.
std::vector<Inquiry::Question> Inquiry::questionsOf(const Items& within, bool live) {
    std::vector<Question> questions;
    const Items byStatus = live ? shownByStatus(within) : Items();
    for (auto* item : within) {
        if (!asks(*item, Way::single, 2 * within.size()) || std::ranges::count(byStatus, item) > 0) continue;
        auto& answer = item->by(Way::single);
        if (live) {
            questions.push_back({item->name, true, [&answer](const RemoteFacts& facts) { answer.live = facts; }});
        } else if (!answer.copy) {
            questions.push_back({item->temporary, false, [&answer](const RemoteFacts& facts) { answer.copy = facts; }});
        }
    }
    return questions;
}

void Inquiry::askAfter(Dialogue& dialogue, const Items& renamed, const Answered& then) {
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
        askEachAfter(dialogue, folder, within, then);
    }
}

void Inquiry::askEachAfter(Dialogue& dialogue, const std::string& folder, const Items& within, const Answered& then) {
    constexpr auto lastsOut = TransferControl::AtStop::lastsOut;
    const Items byStatus = shownByStatus(within);
    std::vector<Question> questions;
    for (auto* item : within) {
        if (std::ranges::count(byStatus, item) == 0)
            questions.push_back({item->name, false, [item](const RemoteFacts& facts) { item->after = facts; }});
    }
    if (byStatus.empty()) {
        askSingly(dialogue, folder, questions, lastsOut, [then, within] { then(within); });
        tryStatus(dialogue, folder, within);
        return;
    }
    askSingly(dialogue, folder, questions, lastsOut);
    auto block = statusOf(folder);
    block.atStop = lastsOut;
    dialogue.add(std::move(block), [this, within, byStatus, then](const BlockOutcome& outcome) {
        const StatusListing listing(outcome);
        for (auto* item : byStatus) {
            item->after = listing.find(item->name);
            if (item->after.presence == Presence::present && item->after.size == item->size()) continue;
            if (item->stage == Item::Stage::renamed) item->stage = Item::Stage::renaming; // to be asked about singly
            item->bothWays = true;
        }
        then(within);
    });
}

bool Inquiry::learnsFromFew(const Items& files) const {
    return mayTryStatus() && std::ranges::count_if(files, isNew) > static_cast<std::ptrdiff_t>(leastToLearnFor);
}

bool Inquiry::mayTryStatus() const { return !mayList() && traits.statusListing() == Support::untried; }

// Does the status show what is there? Until that is known it counts as missing, lest a server that ends the connection
// at this command is asked again and again.
void Inquiry::tryStatus(Dialogue& dialogue, const std::string& folder, const Items& within) {
    if (!mayTryStatus() || within.size() < leastForStatus) return;
    auto block = statusOf(folder);
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

// New files of one folder, if there are several and a status of the folder is enough to ask about them: it tells
// whether there is such a file, but not its date.
Items Inquiry::shownByStatus(const Items& within) const {
    Items shown;
    if (mayList() || traits.statusListing() != Support::works) return shown;
    std::ranges::copy_if(within, std::back_inserter(shown), [](const Item* item) {
        return !item->bothWays && item->stage != Item::Stage::renaming && isNew(item);
    });
    return shown.size() < leastForStatus ? Items() : shown;
}

// A status that does not show the copies may leave out other files, too.
void Inquiry::askByStatus(Dialogue& dialogue, const std::string& folder, const Items& within) {
    const Items listed = shownByStatus(within);
    if (listed.empty()) return;
    dialogue.add(statusOf(folder), [this, listed](const BlockOutcome& outcome) {
        const StatusListing found(outcome);
        date(outcome, listed.size());
        for (auto* item : listed) {
            const auto copy = found.find(item->temporary);
            const bool shown = copy.presence == Presence::present && copy.size == item->expected();
            const auto live = found.find(item->name);
            if (shown && live.presence == Presence::absent) {
                item->by(Way::single).live = live;
            } else {
                item->bothWays = true; // in the next conversation, each on its own
                if (!shown && item->stage == Item::Stage::sent) traits.learnStatusListing(Support::missing);
            }
        }
    });
}

bool Inquiry::isAnswered(Item& item) const {
    const bool single = item.by(Way::single).isWhole();
    const bool listing = item.by(Way::listing).isWhole();
    if (!single && !listing) return false;
    if ((single && (listing || !mayList())) || isCertain(item)) return true;
    item.bothWays = true;
    item.forgetLive();
    return false;
}

bool Inquiry::mayList() const { return traits.hasMLSD() && traits.login() != ServerTraits::Login::oneTransfer; }

Way Inquiry::firstWay(std::size_t questions) const {
    if (!mayList()) return Way::single;
    if (!traits.confirmsSizes()) return Way::listing;
    const std::size_t roundTrips = traits.mlst() == Support::missing ? 2 * questions : questions;
    return roundTrips < roundTripsOfListing || isQuickerThanListing(roundTrips) ? Way::single : Way::listing;
}

// Near the server, a listing of a large folder or with TLS takes longer than many single questions.
bool Inquiry::isQuickerThanListing(std::size_t roundTrips) const {
    const auto reply = traits.replyTime();
    const auto first = transport.profile.transport == TransferProtocol::ftp ? Time(0) : firstProtectedListing;
    return reply && *reply * roundTrips < std::min(traits.listingTime().value_or(first), longestListing);
}

bool Inquiry::asks(Item& item, Way way, std::size_t questions) const {
    if (item.by(way).isWhole()) return false;
    if (item.bothWays) return way == Way::single || mayList();
    return way == firstWay(questions);
}

// One way of asking is enough. That a listing lacks a file which was there is no proof: it may have been cut.
bool Inquiry::isCertain(Item& item) {
    combine(item);
    const bool proven =
        item.by(Way::single).isWhole() || item.live.presence == Presence::present
        || (item.live.presence == Presence::absent && !std::holds_alternative<ServerVersion>(item.lastSeen));
    return proven && item.live.presence != Presence::unknown
           && (isLive(item) || verdict(item.expected(), item.copy, item.lastSeen, item.live) == Verdict::publish);
}

// Of several answers in one block the first one may be as old as the block.
void Inquiry::date(const BlockOutcome& outcome, std::size_t liveFiles) {
    if (liveFiles == 0) return;
    const auto oldest = liveFiles == 1 ? outcome.notEndedAt : outcome.notBegunAt;
    answered = answered ? std::min(*answered, oldest) : oldest;
}

// By commands of its own, which take half of the round trips of curl's "head".
void Inquiry::askSingly(
    Dialogue& dialogue, const std::string& folder, const std::vector<Question>& questions,
    TransferControl::AtStop atStop, const std::function<void()>& then) {
    if (questions.empty()) return;
    const Support mlst = traits.mlst();
    std::vector<std::string> commands;
    if (mlst != Support::works) commands.emplace_back("TYPE I"); // some servers give no sizes of texts
    const std::size_t before = commands.size();
    for (const auto& question : questions) {
        for (auto& command : commandsAbout(question.name, mlst)) commands.push_back(std::move(command));
    }
    const std::size_t count = commands.size() - before;
    auto block = commandsIn(folder, commands);
    block.atStop = atStop;
    dialogue.add(std::move(block), [this, questions, mlst, count, then](const BlockOutcome& outcome) {
        date(outcome, static_cast<std::size_t>(std::ranges::count(questions, true, &Question::live)));
        const Replies replies(outcome, count);
        const std::size_t each = count / questions.size();
        for (std::size_t i = 0; i < questions.size(); ++i) {
            questions[i].take(readFacts(replies, each * i, mlst, traits));
        }
        if (then) then();
    });
}

// As far as these files are to be asked about by a listing.
void Inquiry::askByListing(Dialogue& dialogue, const std::string& folder, const Items& within) {
    Items listed;
    std::ranges::copy_if(
        within, std::back_inserter(listed), [&](Item* item) { return asks(*item, Way::listing, 2 * within.size()); });
    if (listed.empty()) return;
    dialogue.add(listingOf(folder), [this, listed](const BlockOutcome& outcome) {
        const Listing found(outcome);
        date(outcome, listed.size());
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
