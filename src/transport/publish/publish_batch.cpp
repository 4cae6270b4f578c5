#include "transport/publish/publish_batch.h"

#include "model/error.h"
#include "platform/child_process.h"
#include "platform/text.h"
#include "transport/curl/curl_configuration.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/publish/leftovers.h"
#include "transport/publish/staged_copy.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

std::string incompleteMessage(const Item& item) {
    const auto& path = item.file.path;
    if (!item.copy.size) {
        return "The server confirmed the upload of " + path
               + ", but does not have it. The live file was not replaced; the upload will be retried.";
    }
    return "The server stored " + std::to_string(*item.copy.size) + " bytes of " + path + ", which has "
           + std::to_string(item.expected()) + ". The live file was not replaced; the upload will be retried.";
}

} // namespace

Batch::Batch(const FTPTransport& used, std::span<const FileToPublish> files, const PublishEvents& called)
    : transport(used), traits(*used.traits), events(called), queries(used) {
    items.reserve(files.size());
    for (const auto& file : files) items.push_back({.file = file});
}

Batch::~Batch() {
    for (auto& item : items) {
        const bool begun =
            item.stage == Stage::interrupted || (item.stage == Stage::toSend && item.confirmed > 0) || &item == sending;
        if (item.perhapsOnServer && begun && mayContinue(item)) {
            traits.keep(
                transport.profile, item.file.path,
                {.version = item.file.fingerprint,
                 .file = {.folder = item.folder, .name = item.temporary},
                 .confirmed = item.confirmed,
                 .most = item.expected()});
        } else {
            leaveForRemoval(item);
            forgetUnusedName(item);
        }
    }
}

Batch::End Batch::run(bool othersWait) {
    const auto began = Time::now();
    if (!std::exchange(staged, true)) {
        for (auto& item : items) stage(item);
    }
    while (goesOn && std::ranges::any_of(items, &Item::isOpen)) {
        sendAndAsk();
        decide();
        transport.control->check();
        const bool hadItsTurn = items.size() == 1 && items.front().stage == Stage::toSend && items.front().confirmed > 0
                                && Time::now() - began >= Time::duration(transport.limits.run) / 4;
        if (goesOn && othersWait && hadItsTurn) return End::paused;
    }
    return goesOn ? End::complete : End::serverFailed;
}

Items Batch::all(std::initializer_list<Stage> stages) {
    Items found;
    for (auto& item : items) {
        if (std::ranges::find(stages, item.stage) != stages.end()) found.push_back(&item);
    }
    return found;
}

void Batch::stage(Item& item) {
    transport.control->check();
    try {
        const auto pieces = splitNonEmpty(item.file.path, '/');
        if (pieces.empty() || !validName(pieces.back())) throw SyncError("Invalid filename.");
        item.name = pieces.back();
        item.folder = join({pieces.begin(), pieces.end() - 1}, '/');
        item.number = stagedCopies.size();
        const std::string copy = "upload" + (item.number == 0 ? "" : std::to_string(item.number));
        stagedCopies.push_back(stageCopy(
            transport.profile.localFolder, item.file.path, item.file.fingerprint, staging, copy, *transport.control,
            item.number == 0 ? CopyPlace::folder : CopyPlace::memoryIfSmall));
        if (events.staged) events.staged(item.file, copyOf(item));
        resumeEarlierUpload(item);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        fail(item, {.message = describe(error)});
    }
}

// Files that an earlier conversation left open are queried first, in a conversation without sends, so that their state
// is not lost if the next one fails. Complete copies are among them: the live file may have changed since the answer.
void Batch::sendAndAsk() {
    const auto open = all({Stage::sent, Stage::complete, Stage::renaming});
    const auto interrupted = all({Stage::interrupted});
    if (open.empty() && !interrupted.empty()) {
        continueInterrupted(*interrupted.front());
        return;
    }
    Dialogue dialogue(transport, traits.login());
    addRemovals(dialogue, transport);
    if (open.empty()) {
        planToSend(dialogue);
        if (planned.empty()) return;
    } else {
        planToPublish(dialogue, open, {});
    }
    try {
        converse(dialogue);
    } catch (const Cancelled&) {
        settleRenamed(all({Stage::renamed})); // the server has confirmed them
        throw;
    }
    if (dialogue.broken) {
        settleRenamed(all({Stage::renamed}));
    } else {
        // The conversation ended before the query that follows a rename.
        for (auto* item : all({Stage::renamed})) item->stage = Stage::renaming;
    }
    for (auto* item : planned) forgetUnusedName(*item);
    if (dialogue.broken) handleBroken(dialogue);
    planned.clear();
}

void Batch::planToSend(Dialogue& dialogue) {
    planned = all({Stage::toSend});
    if (planned.empty()) return;
    const bool publishes =
        !setsModes && std::ranges::none_of(planned, [this](const Item* item) { return goesInParts(*item); });
    if (traits.login() == ServerTraits::Login::oneTransfer) planned.resize(1);
    if (!publishes && planned.size() > groupLength) planned.resize(groupLength);
    if (publishes && queries.shouldTryFewFirst(planned)) planned.resize(trialLength);
    const auto groups = inGroups(planned, groupLength);
    for (std::size_t number = 0; number < groups.size(); ++number) {
        for (auto* item : groups[number]) send(dialogue, *item);
        if (publishes)
            planToPublish(dialogue, groups[number], number + 1 < groups.size() ? groups[number + 1] : Items());
    }
    std::erase_if(planned, [](const Item* item) { return !item->isOpen(); });
    if (!publishes) queries.query(dialogue, planned);
    std::vector<ServerTraits::Leftover> temporary;
    for (const auto* item : planned) {
        if (item->confirmed == 0) temporary.push_back({.folder = item->folder, .name = item->temporary});
    }
    traits.announce(transport.profile, temporary);
    markPerhapsOnServer(groups.front());
}

// Even if the conversation breaks off: curl is ahead of what was seen of it, but never beyond a pause.
void Batch::markPerhapsOnServer(const Items& group) {
    for (auto* item : group) item->perhapsOnServer = true;
}

bool Batch::goesInParts(const Item& item) const {
    return item.confirmed > 0 || (traits.appends() && item.size() > transport.limits.largestPart);
}

// An existing folder can be entered by one command instead of level by level.
bool Batch::isFolderThere(const Item& item) const {
    if (item.levelByLevel) return false;
    if (item.confirmed > 0 || std::holds_alternative<ServerVersion>(item.lastSeen)) return true;
    return std::ranges::any_of(planned, [&](const Item* each) { return each < &item && each->folder == item.folder; });
}

void Batch::send(Dialogue& dialogue, Item& item) {
    const UploadLimits& limits = transport.limits;
    if (item.confirmed == 0) {
        leaveForRemoval(item);
        item.temporary = temporaryName();
    }
    item.answers = {};
    item.copy = item.live = {};
    std::size_t file = item.number;
    if (goesInParts(item)) {
        try {
            item.part = std::min(item.size() - item.confirmed, nextPart(limits, item.part, item.partTook));
            stagedPart = stagePart(copyOf(item), item.confirmed, item.part, staging, "part");
        } catch (const std::exception& error) {
            fail(item, {.message = describe(error)});
            return;
        }
        file = stagedCopies.size();
    } else {
        item.part = item.size();
    }
    TransferBlock block{
        .path = childPath(item.folder, item.temporary),
        .options = {{"ftp-create-dirs"}, {"upload-file", ChildProcess::filePathOf(file)}}};
    if (isFolderThere(item)) block.options.push_back({"ftp-method", "singlecwd"});
    if (item.confirmed > 0) block.options.push_back({"append"});
    if (limits.run != UploadLimits().run) block.options.push_back({"max-time", std::to_string(limits.run.count())});
    dialogue.add(
        std::move(block), [this, &item](const BlockOutcome& outcome) { sendingEnds(item, outcome); },
        [this, &item] { sendingBegins(item); });
}

void Batch::sendingBegins(Item& item) {
    sending = &item;
    item.partBegan = Time::now();
    if (item.confirmed == 0) ++item.sends;
    if (transport.observer != nullptr) {
        transport.observer->fileBegins(item.file.path, item.size());
        if (item.confirmed > 0) transport.observer->fileMoved(item.confirmed);
    }
    if (events.sending) events.sending(item.file);
}

void Batch::sendingEnds(Item& item, const BlockOutcome& outcome) {
    sending = nullptr;
    if (outcome.succeeded()) {
        item.partTook = Time::now() - item.partBegan;
        item.stage = Stage::sent;
        if (transport.observer != nullptr) transport.observer->fileMoved(item.confirmed + item.part);
    } else if (outcome.code == CurlCode::noSuchFolder && isFolderThere(item)) {
        item.levelByLevel = true;
        --item.sends;
    } else if (outcome.code == CurlCode::uploadRefused && item.confirmed > 0) {
        traits.refusedToAppend();
        startOver(item);
    } else if (outcome.code != CurlCode::partialFile || !mayContinue(item) || !interrupt(item, failureFrom(outcome))) {
        fail(item, failureFrom(outcome));
    }
}

void Batch::decide() {
    for (auto* item : all({Stage::sent, Stage::renaming})) {
        if (!goesOn || !queries.isAnswered(*item)) continue;
        combine(*item);
        if (isLive(*item)) {
            finish(*item, item->live);
        } else {
            apply(*item, verdict(item->expected(), item->copy, item->lastSeen, item->live));
        }
    }
}

void Batch::apply(Item& item, Verdict found) {
    switch (found) {
    case Verdict::publishUnconfirmed:
        traits.confirmsNoSizes();
        if (item.isPart()) {
            traits.refusedToAppend(); // nothing can be appended to a copy of unknown size
            startOver(item);
            return;
        }
        if (traits.firstUnconfirmed() && events.sizesUnconfirmed) events.sizesUnconfirmed();
        [[fallthrough]];
    case Verdict::publish:
        // Only the listing reports the size.
        if (item.by(Way::single).isComplete() && !item.by(Way::single).copy->size) traits.confirmsNoSizes();
        if (item.isPart()) {
            item.confirmed = item.expected();
            item.interruptions = 0;
            item.stage = Stage::toSend;
        } else {
            item.stage = Stage::complete;
        }
        return;
    case Verdict::sendAgain:
        if (mayContinue(item) && item.copy.size && *item.copy.size < item.expected()) {
            if (!interrupt(item, {.message = incompleteMessage(item)})) failWithServer(item, item.problem);
        } else {
            sendAgain(item, incompleteMessage(item));
        }
        return;
    case Verdict::keepLive:
        item.stage = Stage::done;
        if (events.notReplaced) events.notReplaced(item.file, versionOf(item.live));
        return;
    }
}

void Batch::sendAgain(Item& item, const std::string& message) {
    if (item.sends >= maxAttempts) {
        fail(item, {.message = message});
    } else {
        startOver(item);
    }
}

void Batch::finish(Item& item, const RemoteFacts& facts) {
    item.stage = Stage::done;
    item.perhapsOnServer = false;
    traits.isGone(transport.profile, {.folder = item.folder, .name = item.temporary});
    if (events.published) events.published({.file = item.file, .version = versionOf(facts)});
}

void Batch::fail(Item& item, const PublishFailure& failure) {
    item.stage = Stage::done;
    if (events.failed) events.failed(item.file, failure);
}

void Batch::failWithServer(Item& item, PublishFailure failure) {
    const auto reached = item.stage;
    goesOn = false;
    failure.kind = PublishFailure::Kind::server;
    fail(item, failure);
    if (reached == Stage::interrupted) item.stage = reached; // a later batch continues it
}

// curl did not reach the file, so its temporary name is not on the server.
void Batch::forgetUnusedName(Item& item) {
    if (item.perhapsOnServer || item.stage != Stage::toSend || item.temporary.empty()) return;
    traits.isGone(transport.profile, {.folder = item.folder, .name = item.temporary});
    item.temporary.clear();
}

// Notes the temporary file for removal.
void Batch::leaveForRemoval(Item& item) {
    if (!item.perhapsOnServer) return;
    item.perhapsOnServer = false;
    traits.leave(transport.profile, {.folder = item.folder, .name = item.temporary});
}

void Batch::converse(Dialogue& dialogue) {
    std::vector<int> files;
    for (const auto& copy : stagedCopies) files.push_back(copy.get());
    if (stagedPart) files.push_back(stagedPart.get());
    std::function<void(const ChildProcess&)> watching;
    if (transport.observer != nullptr) watching = [this](const ChildProcess& curl) { reportProgress(curl); };
    dialogue.run(std::move(files), watching);
}

void Batch::reportProgress(const ChildProcess& curl) const {
    if (sending == nullptr) return;
    const std::size_t file = goesInParts(*sending) ? stagedCopies.size() : sending->number;
    if (const auto bytes = curl.filePosition(file)) transport.observer->fileMoved(sending->confirmed + *bytes);
}

// Ends the work unless another conversation may get further.
void Batch::handleBroken(const Dialogue& dialogue) {
    auto* item = std::exchange(sending, nullptr);
    const BlockOutcome& broken = *dialogue.broken;
    if (!dialogue.progressed && isBeforeLogin(broken.code)) {
        for (auto* each : planned) {
            if (each->confirmed > 0) continue;
            each->perhapsOnServer = false;
            traits.isGone(transport.profile, {.folder = each->folder, .name = each->temporary});
        }
    }
    const bool tlsTooOld = dialogue.login == ServerTraits::Login::manyWithTls12 && broken.code == CurlCode::tlsFailed;
    if (dialogue.scope == FailureScope::furtherData || tlsTooOld) {
        if (item != nullptr && item->confirmed == 0) --item->sends; // the file is not the reason
        if (traits.wasRefused(dialogue.login)) return;
    }
    if (item != nullptr && mayContinue(*item) && interrupt(*item, failureFrom(broken))) {
        fruitless = 0;
        return;
    }
    // A file that needs more than a whole run does not delay the others.
    if (item != nullptr && broken.code == CurlCode::timedOut && Time::now() - item->partBegan >= transport.limits.run) {
        auto failure = failureFrom(broken);
        if (!traits.appends()) failure.message += " This server does not let an upload be continued.";
        fail(*item, failure);
        return;
    }
    if (item == nullptr) {
        const auto open = std::ranges::find_if(items, &Item::isOpen);
        if (open == items.end()) return;
        item = &*open;
    }
    fruitless = dialogue.progressed ? 0 : fruitless + 1;
    // A second try may save what was sent already.
    const bool worthATry = fruitless == 0 || (fruitless == 1 && planned.empty() && !isBeforeLogin(broken.code));
    if (worthATry && std::max({item->sends, item->renames, item->interruptions}) < maxAttempts) return;
    failWithServer(*item, failureFrom(broken));
}

} // namespace zembrastel
