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
#include <map>
#include <span>
#include <utility>

namespace zembrastel {
namespace {

constexpr int noSuchFile = 78;
constexpr int tlsFailed = 35;

// Of sends and of renames of one file, before it counts as failed.
constexpr int mostAttempts = 3;

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

RemoteFacts factsOf(const BlockOutcome& outcome) {
    if (outcome.code == noSuchFile) return {.presence = RemoteFacts::Presence::absent};
    if (!outcome.succeeded() || !isValidUtf8(outcome.output)) return {};
    RemoteFacts facts{.presence = RemoteFacts::Presence::present, .size = findContentLength(outcome.output)};
    const auto value = findLastModified(outcome.output);
    if (const auto date = value ? parseHttpDate(*value) : std::nullopt) facts.modified = toRemoteDate(*date);
    return facts;
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
        plan.blocks.push_back(std::move(block));
        steps.push_back({.begins = std::move(begins), .ended = std::move(ended)});
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
    };

    bool take(std::size_t block, const BlockOutcome& outcome) {
        if (!outcome.succeeded()) {
            scope = scopeOf(outcome.code, outcome.message, transport.profile.transport != TransferProtocol::ftp);
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
        }
        question(dialogue, chosen);
        hold(dialogue, TransferControl::AtStop::ends);
        if (dialogue.broken) breakDown(dialogue);
    }

    void removeLeftovers(Dialogue& dialogue) {
        std::map<std::string, std::vector<ServerTraits::Leftover>> byFolder;
        for (auto& left : traits.leftovers(transport.profile)) byFolder[left.folder].push_back(left);
        for (const auto& [folder, files] : byFolder) {
            TransferBlock block{.path = folder, .directory = true, .options = {{"head"}}};
            // One that is not there any more does not keep the next from being removed.
            for (const auto& file : files) block.options.push_back({"quote", "-*DELE " + file.name});
            dialogue.add(std::move(block), [this, gone = files](const BlockOutcome&) {
                for (const auto& file : gone) traits.cleared(file);
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
            for (auto* item : within) {
                const auto way = nextWay(*item, within.size());
                if (way == Way::listing) listed.push_back(item);
                if (way == Way::single) askSingly(dialogue, *item);
            }
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

    static void askSingly(Dialogue& dialogue, Item& item) {
        const auto ask = [&](const std::string& name, std::optional<RemoteFacts>& answer) {
            if (answer) return;
            dialogue.add(
                {.path = childPath(item.folder, name), .options = {{"head"}}},
                [&answer](const BlockOutcome& outcome) { answer = factsOf(outcome); });
        };
        ask(item.temporary, item.by(Way::single).copy);
        ask(item.name, item.by(Way::single).live);
    }

    void askByListing(Dialogue& dialogue, const std::string& folder, const Items& listed) {
        dialogue.add(
            {.path = folder, .directory = true, .options = {{"request", "MLSD"}}},
            [this, listed](const BlockOutcome& outcome) {
                const Listing listing(outcome);
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
        Dialogue dialogue(transport, traits.login());
        for (auto* item : chosen) rename(dialogue, *item);
        verifyLive(dialogue, chosen);
        hold(dialogue, TransferControl::AtStop::lastsOut);
        for (auto* item : all({Stage::renamed})) settle(*item);
        if (dialogue.broken) breakDown(dialogue);
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
            for (auto* item : within) {
                dialogue.add({.path = item->file.path, .options = {{"head"}}}, [item](const BlockOutcome& outcome) {
                    item->after = factsOf(outcome);
                });
            }
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
            for (auto* each : all({Stage::toSend})) each->perhapsOnServer = false;
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
        if (dialogue.progressed && item->sends < mostAttempts && item->renames < mostAttempts) return;
        goesOn = false;
        fail(*item, dialogue.broken->message, PublishFailure::Kind::server);
    }

    const FTPTransport& transport;
    ServerTraits& traits;
    const PublishEvents& events;
    const PrivateFolder staging;
    std::vector<Descriptor> stagedCopies;
    std::vector<Item> items;
    Item* sending = nullptr;
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
