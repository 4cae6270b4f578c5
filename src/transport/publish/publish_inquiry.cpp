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
using Mlst = ServerTraits::Mlst;

// A listing takes as many round trips as so many commands.
constexpr std::size_t roundTripsOfListing = 6;

TransferBlock listingOf(const std::string& folder) {
    return {.path = folder, .directory = true, .options = {{"request", "MLSD"}, {"ftp-method", "singlecwd"}}};
}

std::vector<std::string> commandsAbout(const std::string& name, Mlst mlst) {
    std::vector<std::string> commands;
    if (mlst != Mlst::missing) commands.push_back("MLST " + name);
    if (mlst != Mlst::works) commands.insert(commands.end(), {"MDTM " + name, "SIZE " + name});
    return commands;
}

// What the replies to these commands say, of which the first has this number; and whether the server knows MLST.
RemoteFacts readFacts(const Replies& replies, std::size_t number, Mlst asked, ServerTraits& traits) {
    if (asked == Mlst::missing) return replies.datesAndSizes(number);
    const auto facts = replies.facts(number);
    if (asked == Mlst::works) return facts;
    const bool useful = facts.presence == Presence::present && facts.size && facts.modified;
    if (useful) traits.learnMlst(Mlst::works);
    if (facts.presence == Presence::absent || useful) return facts;
    if (facts.presence == Presence::present || replies.isUnknownCommand(number)) traits.learnMlst(Mlst::missing);
    return replies.datesAndSizes(number + 1);
}

} // namespace

Inquiry::Inquiry(const FTPTransport& used) : transport(used), traits(*used.traits) {}

std::size_t Inquiry::commandsForEach() const { return traits.mlst() == Mlst::missing ? 2 : 1; }

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
        askByListing(dialogue, folder, within);
    }
}

// About those files of one folder that are to be asked about on their own: their copies, or the live ones.
std::vector<Inquiry::Question> Inquiry::questionsOf(const Items& within, bool live) {
    std::vector<Question> questions;
    for (auto* item : within) {
        if (!asks(*item, Way::single, 2 * within.size())) continue;
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
        std::vector<Question> questions;
        for (auto* item : within) {
            questions.push_back({item->name, false, [item](const RemoteFacts& facts) { item->after = facts; }});
        }
        askSingly(dialogue, folder, questions, TransferControl::AtStop::lastsOut, [then, within] { then(within); });
    }
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
    const std::size_t roundTrips = traits.mlst() == Mlst::missing ? 2 * questions : questions;
    return mayList() && (roundTrips >= roundTripsOfListing || !traits.confirmsSizes()) ? Way::listing : Way::single;
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
    const Mlst mlst = traits.mlst();
    std::vector<std::string> commands;
    if (mlst != Mlst::works) commands.emplace_back("TYPE I"); // some servers give no sizes of texts
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
