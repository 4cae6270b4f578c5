#include "transport/publishing.h"

#include "model/error.h"
#include "platform/child_process.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "transport/conversation.h"
#include "transport/ftp_transport.h"
#include "transport/listing_parsers.h"
#include "transport/local_place.h"
#include "transport/remote_url.h"
#include "transport/staged_copy.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <ctime>
#include <functional>
#include <map>
#include <span>
#include <utility>

namespace zembrastel {
namespace {

constexpr int tlsFailed = 35;

// Of sends and of renames of one file, before it counts as failed.
constexpr int mostAttempts = 3;

// From the answer about the live files to the renames. A machine that is always slower goes on after some times.
constexpr std::chrono::milliseconds longestTrust{700};
constexpr int maxTimesTooOld = 3;

// Goes on while the machine is suspended.
std::chrono::nanoseconds sinceBoot() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

// In one folder; from here on one listing answers sooner than questions about each.
constexpr std::size_t worthAListing = 3;

// Servers leave entries out of listings that are longer than a limit of theirs, and say nothing of it.
constexpr std::size_t longListing = 2000;

// The ways to ask a server about a file: on its own (MDTM, SIZE), and by a listing of its folder (MLSD).
enum class Way : std::size_t { single, listing };
constexpr std::array everyWay{Way::single, Way::listing};

// What the server says of the copy and of the live file, in one way.
struct Answer {
    std::optional<RemoteFacts> copy{};
    std::optional<RemoteFacts> live{};

    [[nodiscard]] bool isWhole() const { return copy && live; }
};

struct Item {
    enum class Stage {
        toSend,
        sent,     // to be asked about
        complete, // to go live
        renaming, // perhaps live: to be asked about
        renamed,
        done
    };

    const FileToPublish& file;
    std::size_t number = 0; // of the staged copy among the files handed to curl
    std::string folder{};
    std::string name{};
    Stage stage = Stage::toSend;
    std::string temporary{};
    bool perhapsOnServer = false; // under the temporary name
    int sends = 0;
    int renames = 0;
    LastSeen lastSeen = file.lastSeen;
    std::array<Answer, everyWay.size()> answers{};
    RemoteFacts copy{}; // the answers taken together
    RemoteFacts live{};
    RemoteFacts copyBefore{}; // the renaming
    RemoteFacts liveBefore{};
    RemoteFacts after{}; // what is live after it

    [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(file.fingerprint.size); }
    [[nodiscard]] bool isOpen() const { return stage != Stage::done; }
    [[nodiscard]] Answer& by(Way way) { return answers.at(static_cast<std::size_t>(way)); }
};

using Items = std::vector<Item*>;

// The server's replies to the last commands of a block, of which each has one: "213 20200101123456".
class Replies {
public:
    Replies(const BlockOutcome& outcome, std::size_t commands) {
        if (!outcome.succeeded()) return;
        for (const auto line : split(outcome.output, '\n')) {
            constexpr std::size_t codeLength = 3;
            // Of a reply of several lines the last one has a blank there.
            const bool last = line.size() > codeLength && line[codeLength] == ' '
                              && std::all_of(line.begin(), line.begin() + codeLength, isDigit);
            if (last) lines.emplace_back(trimmed(line));
        }
        if (lines.size() < commands) lines.clear();
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(std::min(commands, lines.size())));
    }

    // What follows the code in the reply of this number; nothing for a reply of another code.
    [[nodiscard]] std::optional<std::string_view> after(std::string_view code, std::size_t number) const {
        if (number >= lines.size() || !lines[number].starts_with(code)) return std::nullopt;
        return trimmed(std::string_view(lines[number]).substr(code.size()));
    }

    // What the replies to MDTM and SIZE, of which the first has this number, say of a file.
    [[nodiscard]] RemoteFacts facts(std::size_t number) const {
        const auto date = after("213", number);
        const auto size = after("213", number + 1);
        if (!date && !size) {
            const bool absent = after("550", number) || after("550", number + 1);
            return {.presence = absent ? RemoteFacts::Presence::absent : RemoteFacts::Presence::unknown};
        }
        RemoteFacts found{.presence = RemoteFacts::Presence::present};
        if (date) found.modified = parseFTPDate(*date);
        std::uint64_t bytes = 0;
        if (size && std::from_chars(size->data(), size->data() + size->size(), bytes).ec == std::errc()) {
            found.size = bytes;
        }
        return found;
    }

private:
    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

    std::vector<std::string> lines;
};

// A question for the facts of one file, and what is done with the answer.
struct Question {
    std::string name;
    std::function<void(const RemoteFacts& facts)> answered;
};

// Commands in a folder, with the server's replies as output. One that is refused does not keep the next from being
// sent.
TransferBlock commandsIn(const std::string& folder, const std::vector<std::string>& commands) {
    TransferBlock block{.path = folder, .directory = true, .options = {{"head"}, {"dump-header", "-"}}};
    for (const auto& command : commands) block.options.push_back({"quote", "-*" + command});
    return block;
}

std::optional<ServerVersion> versionOf(const RemoteFacts& facts) {
    if (!facts.modified) return std::nullopt;
    return ServerVersion{.modified = *facts.modified, .size = facts.size};
}

// The entries of a folder by name; nothing where they cannot be read.
class Listing {
public:
    explicit Listing(const BlockOutcome& outcome) {
        if (!outcome.succeeded() || !isValidUtf8(outcome.output)) return;
        try {
            entries = parseMLSD(outcome.output);
        } catch (const SyncError&) {
            // Each file is asked about on its own then.
        }
    }

    [[nodiscard]] bool isReadable() const { return entries.has_value(); }

    // Unknown where the listing is no proof.
    [[nodiscard]] RemoteFacts find(const std::string& name) const {
        if (!entries) return {};
        const std::string lowered = asciiLowercase(name);
        bool alike = false; // perhaps the same to the server
        for (const auto& entry : *entries) {
            if (entry.name == name && !entry.directory) {
                return {.presence = RemoteFacts::Presence::present, .modified = entry.modified, .size = entry.size};
            }
            alike = alike || asciiLowercase(entry.name) == lowered;
        }
        if (alike || entries->size() >= longListing) return {};
        return {.presence = RemoteFacts::Presence::absent};
    }

private:
    std::optional<std::vector<RemoteEntry>> entries;
};

// One conversation being put together: its blocks, and what is done with the end of each.
class Dialogue {
public:
    using Ended = std::function<void(const BlockOutcome& outcome)>;

    Dialogue(const FTPTransport& used, ServerTraits::Login usedLogin) : login(usedLogin), transport(used) {}

    void add(TransferBlock block, Ended ended, std::function<void()> begins = {}) {
        if (login == ServerTraits::Login::manyWithTls12 && transport.profile.transport != TransferProtocol::ftp) {
            block.options.push_back({"tls-max", "1.2"});
        }
        const bool data = std::ranges::any_of(
            block.options, [](const auto& option) { return option.key == "upload-file" || option.key == "request"; });
        plan.blocks.push_back(std::move(block));
        steps.push_back({.begins = std::move(begins), .ended = std::move(ended), .data = data});
    }

    // Has curl work through it. An end that is a failure of the server and not of a file is not passed on: the
    // conversation is over then, and broken.
    void hold(
        std::vector<int> files, TransferControl::AtStop atStop, const std::function<void(const ChildProcess&)>& look) {
        if (plan.blocks.empty()) return;
        plan.files = std::move(files);
        plan.atStop = atStop;
        const ConversationEvents events{
            .begins =
                [this](std::size_t block) {
                    if (steps[block].begins) steps[block].begins();
                },
            .ended = [this](std::size_t block, const BlockOutcome& outcome) { return take(block, outcome); },
            .look = look};
        converse(transport.profile, transport.password, *transport.control, plan, events);
    }

    std::optional<BlockOutcome> broken{};    // the end that is the server's failure
    FailureScope scope = FailureScope::file; // of it
    bool progressed = false;
    const ServerTraits::Login login;

private:
    struct Step {
        std::function<void()> begins;
        Ended ended;
        bool data; // over a data connection
    };

    [[nodiscard]] DataConnection connectionOf(std::size_t block) const {
        const auto end = steps.begin() + static_cast<std::ptrdiff_t>(block);
        const bool further =
            steps[block].data && std::any_of(steps.begin(), end, [](const Step& step) { return step.data; });
        if (transport.profile.transport == TransferProtocol::ftp || !further) return DataConnection::first;
        return login == ServerTraits::Login::manyTransfers ? DataConnection::furtherTls13 : DataConnection::further;
    }

    bool take(std::size_t block, const BlockOutcome& outcome) {
        if (!outcome.succeeded()) {
            scope = scopeOf(outcome.code, outcome.message, connectionOf(block));
            if (scope != FailureScope::file) {
                broken = outcome;
                return false;
            }
        }
        progressed = true;
        steps[block].ended(outcome);
        return true;
    }

    const FTPTransport& transport;
    TransferPlan plan{};
    std::vector<Step> steps{};
};

// What is known when the ways of asking are taken together: the more favourable answer counts, since servers have
// reasons of many kinds to answer badly in one of them. That a copy is absent takes both: some servers refuse every
// SIZE.
void combine(Item& item) {
    item.copy = {};
    item.live = {};
    std::size_t absent = 0;
    for (const auto way : everyWay) {
        const auto& [copy, live] = item.by(way);
        if (copy && copy->presence == RemoteFacts::Presence::absent) ++absent;
        const bool better = copy && copy->presence == RemoteFacts::Presence::present
                            && (item.copy.presence != RemoteFacts::Presence::present
                                || (item.copy.size != item.size() && copy->size == item.size()));
        if (better) item.copy = *copy;
        if (!live || live->presence == RemoteFacts::Presence::unknown) continue;
        const bool unknown = item.live.presence == RemoteFacts::Presence::unknown;
        if (unknown || isOtherThan(item.lastSeen, item.live)) item.live = *live;
    }
    if (absent == everyWay.size()) item.copy.presence = RemoteFacts::Presence::absent;
}

// A renaming of which the end was not seen has taken place.
bool isLive(const Item& item) {
    return item.stage == Item::Stage::renaming && item.copy.presence != RemoteFacts::Presence::present
           && item.live.presence == RemoteFacts::Presence::present
           && wentLive(item.size(), item.copyBefore, item.liveBefore, item.live);
}

class Batch {
public:
    Batch(const FTPTransport& used, std::span<const FileToPublish> files, const PublishEvents& called)
        : transport(used), traits(*used.traits), events(called) {
        items.reserve(files.size());
        for (const auto& file : files) items.push_back({.file = file});
    }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    ~Batch() {
        for (auto& item : items) abandon(item);
    }

    // False when a failure of the server ended it.
    bool run() {
        for (auto& item : items) stage(item);
        while (goesOn && std::ranges::any_of(items, &Item::isOpen)) {
            sendAndAsk();
            decide();
            if (goesOn) putInPlace();
            transport.control->check();
        }
        return goesOn;
    }

private:
    using Stage = Item::Stage;

    void stage(Item& item) {
        transport.control->check();
        try {
            const auto pieces = splitNonEmpty(item.file.path, '/');
            if (pieces.empty() || !validName(pieces.back())) throw SyncError("Invalid filename.");
            item.name = pieces.back();
            item.folder = join({pieces.begin(), pieces.end() - 1}, '/');
            item.number = stagedCopies.size();
            const std::string copy = "upload" + (item.number == 0 ? "" : std::to_string(item.number));
            stagedCopies.push_back(stageCopy(
                transport.profile.localFolder, item.file.path, item.file.fingerprint, staging, copy,
                *transport.control));
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception& error) {
            fail(item, describe(error));
        }
    }

    [[nodiscard]] Items all(std::initializer_list<Stage> stages) {
        Items found;
        for (auto& item : items) {
            if (std::ranges::find(stages, item.stage) != stages.end()) found.push_back(&item);
        }
        return found;
    }

    // What an earlier conversation left open comes first and alone, so that it is not lost should the next one fail.
    void sendAndAsk() {
        auto chosen = all({Stage::sent, Stage::renaming});
        Dialogue dialogue(transport, traits.login());
        removeLeftovers(dialogue);
        if (chosen.empty()) {
            chosen = all({Stage::toSend});
            if (chosen.empty()) return;
            if (traits.login() == ServerTraits::Login::oneTransfer) chosen.resize(1);
            for (auto* item : chosen) send(dialogue, *item);
            planned = chosen;
        }
        question(dialogue, chosen);
        hold(dialogue, TransferControl::AtStop::ends);
        if (dialogue.broken) breakDown(dialogue);
        planned.clear();
    }

    void removeLeftovers(Dialogue& dialogue) {
        std::map<std::string, std::vector<ServerTraits::Leftover>> byFolder;
        for (auto& left : traits.leftovers(transport.profile)) byFolder[left.folder].push_back(left);
        for (const auto& [folder, files] : byFolder) {
            std::vector<std::string> commands;
            for (const auto& file : files) commands.push_back("DELE " + file.name);
            dialogue.add(commandsIn(folder, commands), [this, tried = files](const BlockOutcome& outcome) {
                const Replies replies(outcome, tried.size());
                for (std::size_t i = 0; i < tried.size(); ++i)
                    traits.triedToRemove(tried[i], bool(replies.after("250", i)));
            });
        }
    }

    void send(Dialogue& dialogue, Item& item) {
        abandon(item);
        item.temporary = temporaryName();
        item.perhapsOnServer = true; // even if the conversation breaks off: curl is ahead of what was seen of it
        item.answers = {};
        dialogue.add(
            {.path = childPath(item.folder, item.temporary),
             .options = {{"ftp-create-dirs"}, {"upload-file", ChildProcess::filePathOf(item.number)}}},
            [this, &item](const BlockOutcome& outcome) {
                sending = nullptr;
                if (outcome.succeeded()) {
                    item.stage = Stage::sent;
                    if (transport.observer != nullptr) transport.observer->fileMoved(item.size());
                } else {
                    fail(item, outcome.message);
                }
            },
            [this, &item] {
                sending = &item;
                ++item.sends;
                if (transport.observer != nullptr) transport.observer->fileBegins(item.file.path, item.size());
                if (events.sending) events.sending(item.file);
            });
    }

    // Has the server say what it has of these items, of which the sends may be in the same conversation.
    void question(Dialogue& dialogue, const Items& asked) {
        std::map<std::string, Items> byFolder;
        for (auto* item : asked) byFolder[item->folder].push_back(item);
        for (const auto& [folder, within] : byFolder) {
            Items listed;
            std::vector<Question> questions;
            for (auto* item : within) {
                const auto way = nextWay(*item, within.size());
                if (way == Way::listing) listed.push_back(item);
                if (way != Way::single) continue;
                auto& answer = item->by(Way::single);
                questions.push_back({item->temporary, [&answer](const RemoteFacts& facts) { answer.copy = facts; }});
                questions.push_back({item->name, [this, &answer](const RemoteFacts& facts) {
                                         answer.live = facts;
                                         answered = sinceBoot();
                                     }});
            }
            askSingly(dialogue, folder, questions);
            if (!listed.empty()) askByListing(dialogue, folder, listed);
        }
    }

    [[nodiscard]] Way firstWay(std::size_t filesInFolder) const {
        return mayList() && (filesInFolder >= worthAListing || !traits.confirmsSizes()) ? Way::listing : Way::single;
    }

    [[nodiscard]] bool mayList() const {
        return traits.hasMLSD() && traits.login() != ServerTraits::Login::oneTransfer;
    }

    // How the server is to be asked about the item next; nothing when its answers do.
    [[nodiscard]] std::optional<Way> nextWay(Item& item, std::size_t filesInFolder) const {
        const bool single = item.by(Way::single).isWhole();
        const bool listing = item.by(Way::listing).isWhole();
        if (!single && !listing) return firstWay(filesInFolder);
        if (single && (listing || !mayList())) return std::nullopt;
        combine(item);
        const bool certain =
            item.live.presence != RemoteFacts::Presence::unknown
            && (isLive(item) || verdict(item.size(), item.copy, item.lastSeen, item.live) == Verdict::publish);
        if (certain) return std::nullopt;
        return single ? Way::listing : Way::single;
    }

    // By commands of its own, which take half of the round trips of curl's "head".
    static void askSingly(Dialogue& dialogue, const std::string& folder, const std::vector<Question>& questions) {
        if (questions.empty()) return;
        std::vector<std::string> commands{"TYPE I"}; // some servers give no sizes of texts
        for (const auto& question : questions) {
            commands.push_back("MDTM " + question.name);
            commands.push_back("SIZE " + question.name);
        }
        dialogue.add(commandsIn(folder, commands), [questions](const BlockOutcome& outcome) {
            const Replies replies(outcome, 2 * questions.size());
            for (std::size_t i = 0; i < questions.size(); ++i) questions[i].answered(replies.facts(2 * i));
        });
    }

    void askByListing(Dialogue& dialogue, const std::string& folder, const Items& listed) {
        dialogue.add(
            {.path = folder, .directory = true, .options = {{"request", "MLSD"}}},
            [this, listed](const BlockOutcome& outcome) {
                const Listing listing(outcome);
                answered = sinceBoot();
                if (!listing.isReadable()) traits.lacksMLSD();
                for (auto* item : listed) {
                    const auto copy = listing.find(item->temporary);
                    item->by(Way::listing) = {.copy = copy, .live = listing.find(item->name)};
                    // A listing without the copy that was just sent may leave out other files, too.
                    if (item->stage == Stage::sent && copy.presence == RemoteFacts::Presence::absent) {
                        item->by(Way::listing).live = RemoteFacts{};
                    }
                }
            });
    }

    void decide() {
        for (auto* item : all({Stage::sent, Stage::renaming})) {
            const bool asked = item->by(Way::single).isWhole() || item->by(Way::listing).isWhole();
            if (!goesOn || !asked || nextWay(*item, 1)) continue;
            combine(*item);
            if (isLive(*item)) {
                finish(*item, item->live);
            } else {
                act(*item, verdict(item->size(), item->copy, item->lastSeen, item->live));
            }
        }
    }

    void act(Item& item, Verdict found) {
        const auto& path = item.file.path;
        switch (found) {
        case Verdict::publishUnconfirmed:
            traits.confirmsNoSizes();
            if (traits.firstUnconfirmed() && events.sizesUnconfirmed) events.sizesUnconfirmed();
            [[fallthrough]];
        case Verdict::publish:
            // The listing alone has it.
            if (item.by(Way::single).isWhole() && !item.by(Way::single).copy->size) traits.confirmsNoSizes();
            item.stage = Stage::complete;
            return;
        case Verdict::sendAgain:
            sendAgain(
                item, item.copy.size ? "The server stored " + std::to_string(*item.copy.size) + " bytes of " + path
                                           + ", which has " + std::to_string(item.size())
                                           + ". The live file was not replaced; the upload will be retried."
                                     : "The server confirmed the upload of " + path
                                           + ", but does not have it. The live file was not replaced; the upload will "
                                             "be retried.");
            return;
        case Verdict::keepLive:
            item.stage = Stage::done;
            if (events.notReplaced) events.notReplaced(item.file, versionOf(item.live));
            return;
        }
    }

    void sendAgain(Item& item, const std::string& message) {
        if (item.sends >= mostAttempts) {
            fail(item, message);
        } else {
            item.stage = Stage::toSend;
        }
    }

    void putInPlace() {
        const auto chosen = all({Stage::complete});
        if (chosen.empty()) return;
        if (events.goingLive) {
            std::vector<CompleteCopy> copies;
            for (const auto* item : chosen) copies.push_back({.file = item->file, .version = versionOf(item->copy)});
            events.goingLive(copies);
        }
        if (askAgain(chosen)) return;
        Dialogue dialogue(transport, traits.login());
        for (auto* item : chosen) rename(dialogue, *item);
        verifyLive(dialogue, chosen);
        hold(dialogue, TransferControl::AtStop::lastsOut);
        for (auto* item : all({Stage::renamed})) settle(*item);
        if (dialogue.broken) breakDown(dialogue);
    }

    // No live file is replaced on the strength of an old answer: the machine may have been suspended since, or its disk
    // slow with what `goingLive` writes.
    [[nodiscard]] bool askAgain(const Items& chosen) {
        if (sinceBoot() - answered <= longestTrust || timesTooOld++ == maxTimesTooOld) return false;
        for (auto* item : chosen) {
            item->answers = {};
            item->stage = Stage::sent;
        }
        return true;
    }

    void rename(Dialogue& dialogue, Item& item) {
        item.stage = Stage::renaming;
        item.answers = {};
        item.copyBefore = item.copy;
        item.liveBefore = item.live;
        item.after = {};
        dialogue.add(
            {.path = item.folder,
             .directory = true,
             .options = {{"head"}, {"quote", "-RNFR " + item.temporary}, {"quote", "-RNTO " + item.name}}},
            [this, &item](const BlockOutcome& outcome) {
                if (outcome.succeeded()) {
                    item.stage = Stage::renamed;
                } else {
                    fail(item, outcome.message);
                }
            },
            [&item] { ++item.renames; });
    }

    // Servers have confirmed renamings that they had not done.
    void verifyLive(Dialogue& dialogue, const Items& chosen) {
        std::map<std::string, Items> byFolder;
        for (auto* item : chosen) byFolder[item->folder].push_back(item);
        for (const auto& [folder, within] : byFolder) {
            if (firstWay(within.size()) == Way::listing) {
                dialogue.add(
                    {.path = folder, .directory = true, .options = {{"request", "MLSD"}}},
                    [within](const BlockOutcome& outcome) {
                        const Listing listing(outcome);
                        for (auto* item : within) item->after = listing.find(item->name);
                    });
                continue;
            }
            std::vector<Question> questions;
            for (auto* item : within) {
                questions.push_back({item->name, [item](const RemoteFacts& facts) { item->after = facts; }});
            }
            askSingly(dialogue, folder, questions);
        }
    }

    void settle(Item& item) {
        // A server that did not show the copy is not to be believed about what became of it.
        const bool shown = item.copyBefore.presence == RemoteFacts::Presence::present;
        if (!shown || wentLive(item.size(), item.copyBefore, item.liveBefore, item.after)) {
            finish(item, item.after.modified ? item.after : item.copyBefore);
            return;
        }
        // The server altered what it renamed: that is no edit of somebody else's.
        const auto version = versionOf(item.after);
        if (version && item.after.modified == item.copyBefore.modified) item.lastSeen = *version;
        sendAgain(
            item, "The server confirmed the renaming of the uploaded " + item.file.path
                      + ", but has another file in its place, or none. The upload will be retried.");
    }

    void finish(Item& item, const RemoteFacts& facts) {
        item.stage = Stage::done;
        item.perhapsOnServer = false;
        if (events.published) events.published({.file = item.file, .version = versionOf(facts)});
    }

    void fail(Item& item, const std::string& message, PublishFailure::Kind kind = PublishFailure::Kind::file) {
        item.stage = Stage::done;
        if (events.failed) events.failed(item.file, {.kind = kind, .message = message});
    }

    // Notes the temporary file for removal.
    void abandon(Item& item) {
        if (!item.perhapsOnServer) return;
        item.perhapsOnServer = false;
        traits.leave(transport.profile, {.folder = item.folder, .name = item.temporary});
    }

    void hold(Dialogue& dialogue, TransferControl::AtStop atStop) {
        std::vector<int> files;
        for (const auto& copy : stagedCopies) files.push_back(copy.get());
        std::function<void(const ChildProcess&)> look;
        if (transport.observer != nullptr) {
            look = [this](const ChildProcess& curl) {
                if (sending == nullptr) return;
                if (const auto bytes = curl.filePosition(sending->number)) transport.observer->fileMoved(*bytes);
            };
        }
        dialogue.hold(std::move(files), atStop, look);
    }

    // Ends the work unless another conversation may get further.
    void breakDown(const Dialogue& dialogue) {
        auto* item = std::exchange(sending, nullptr);
        if (!dialogue.progressed && isBeforeLogin(dialogue.broken->code)) {
            for (auto* each : planned) each->perhapsOnServer = false;
        }
        const bool tlsTooOld =
            dialogue.login == ServerTraits::Login::manyWithTls12 && dialogue.broken->code == tlsFailed;
        if (dialogue.scope == FailureScope::furtherData || tlsTooOld) {
            if (item != nullptr) --item->sends; // it is not the file
            if (traits.wasRefused(dialogue.login)) return;
        }
        if (item == nullptr) {
            const auto open = std::ranges::find_if(items, &Item::isOpen);
            if (open == items.end()) return;
            item = &*open;
        }
        barren = dialogue.progressed ? 0 : barren + 1;
        // What was sent already is worth a second try.
        const bool worthATry = barren == 0 || (barren == 1 && planned.empty() && !isBeforeLogin(dialogue.broken->code));
        if (worthATry && item->sends < mostAttempts && item->renames < mostAttempts) return;
        goesOn = false;
        fail(*item, dialogue.broken->message, PublishFailure::Kind::server);
    }

    const FTPTransport& transport;
    ServerTraits& traits;
    const PublishEvents& events;
    const PrivateFolder staging;
    std::vector<Descriptor> stagedCopies;
    std::vector<Item> items;
    Items planned; // to be sent in the conversation under way
    Item* sending = nullptr;
    std::chrono::nanoseconds answered{}; // when the server last said what is live
    int timesTooOld = 0;                 // that answer
    int barren = 0;                      // conversations in which nothing was learnt, since one in which something was
    bool goesOn = true;
};

} // namespace

bool publish(const FTPTransport& transport, const std::vector<FileToPublish>& files, const PublishEvents& events) {
    std::vector<std::uint64_t> sizes;
    sizes.reserve(files.size());
    for (const auto& file : files) sizes.push_back(static_cast<std::uint64_t>(file.fingerprint.size));
    for (std::size_t begun = 0; begun < files.size();) {
        const auto length = batchLength(std::span(sizes).subspan(begun));
        if (!Batch(transport, std::span(files).subspan(begun, length), events).run()) return false;
        begun += length;
    }
    return true;
}

} // namespace zembrastel
