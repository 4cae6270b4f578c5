#include "model/error.h"
#include "transport/ftp_transport.h"
#include "transport/publish/publish_batch.h"
#include "transport/publish/server_answers.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace zembrastel {
namespace {

// The longest time from the answers about the live files to the first rename, and to the last one.
constexpr std::chrono::milliseconds maxAnswerAge{700};
constexpr std::chrono::milliseconds maxTimeToLastRename{1000};

// Shorter than the longest time, since the line may become slower after a group was formed.
using Seconds = std::chrono::duration<double>;
constexpr Seconds plannedTimeToLastRename{0.75};

constexpr int maxTimesOutdated = 10;

std::string octal(unsigned mode) {
    std::string digits;
    for (const unsigned shift : {6U, 3U, 0U}) digits += static_cast<char>('0' + ((mode >> shift) & 7U));
    return digits;
}

} // namespace

// The files go live in the conversation that queries them, without another login in between. The first pause keeps the
// answers new: curl sends the queries only when this program has processed everything before them. During the second
// one the program decides. If the answers do not allow all renames, the conversation ends there; the next one queries
// the remaining files again.
void Batch::planToPublish(Dialogue& dialogue, const Items& group, const Items& next) {
    for (auto* item : group) {
        if (item->stage != Stage::complete) continue;
        item->plannedMode = traits.changesModes() ? modeToKeep(*item) : std::nullopt;
        item->forgetLive();
    }
    const auto parts = inGroups(group, maxRenamesAtOnce());
    if (parts.size() > 1) queries.queryCopies(dialogue, parts);
    for (const auto& part : parts) {
        const bool last = &part == &parts.back();
        dialogue.addPause(
            [this] {
                queries.answered.reset();
                return true;
            },
            TransferControl::AtStop::ends);
        parts.size() > 1 ? queries.queryLiveFiles(dialogue, part) : queries.query(dialogue, part);
        dialogue.addPause(
            [this, part, next = last ? next : Items()] {
                if (!mayPublish(part)) return false;
                markPerhapsOnServer(next);
                return true;
            },
            TransferControl::AtStop::lastsOut);
        addRenames(dialogue, part);
    }
    verifyRenames(dialogue, group);
}

// The number of files of which the first answer is not too old when the last file is renamed.
std::size_t Batch::maxRenamesAtOnce() const {
    const auto reply = traits.replyTime();
    if (!reply) return groupLength;
    const Seconds each = *reply * static_cast<double>(queries.commandsForEach() + commandsToRename());
    return static_cast<std::size_t>(std::clamp(plannedTimeToLastRename / each, 1.0, static_cast<double>(groupLength)));
}

bool Batch::mayPublish(const Items& group) {
    decide();
    if (!goesOn || !std::ranges::all_of(group, [](const Item* item) { return item->stage == Stage::complete; }))
        return false;
    setsModes = traits.changesModes()
                && std::ranges::any_of(group, [](const Item* item) { return modeToKeep(*item) != item->plannedMode; });
    if (setsModes) return false;
    announce(group);
    if (isOutdated(group)) return false;
    for (auto* item : group) {
        item->stage = Stage::renaming;
        item->copyBefore = item->copy;
        item->liveBefore = item->live;
        item->answers = {};
        item->after = {};
    }
    return true;
}

// Copies that were announced already are left out: each call makes the answers older.
void Batch::announce(const Items& group) {
    if (!events.goingLive) return;
    std::vector<CompleteCopy> copies;
    for (auto* item : group) {
        const auto version = versionOf(item->copy);
        if (std::exchange(item->announced, version) != version)
            copies.push_back({.file = item->file, .version = version});
    }
    if (!copies.empty()) events.goingLive(copies);
}

void Batch::addRenames(Dialogue& dialogue, const Items& chosen) {
    for (const auto& [folder, within] : byFolder(chosen)) {
        if (oneByOne.contains(folder)) {
            for (auto* item : within) rename(dialogue, folder, {item});
        } else {
            rename(dialogue, folder, within);
        }
    }
}

// Some servers confirm renames that they did not carry out.
void Batch::verifyRenames(Dialogue& dialogue, const Items& chosen) {
    const auto open = std::make_shared<std::size_t>(byFolder(chosen).size());
    queries.queryRenamed(dialogue, chosen, [this, chosen, open](const Items&) {
        if (--*open == 0) settleRenamed(chosen); // together, so that they are reported in the order of the paths
    });
}

// True if the answers are too old to replace live files: the machine may have been suspended since, its disk may be
// slow with what `goingLive` writes, or the line may be slower than planned. Then the server is asked again.
bool Batch::isOutdated(const Items& group) {
    if (queries.answered) {
        const auto age = sinceBoot() - *queries.answered;
        const Seconds renaming = traits.replyTime().value_or(std::chrono::nanoseconds{})
                                 * static_cast<double>(group.size() * commandsToRename());
        if (age <= maxAnswerAge && (group.size() == 1 || age + renaming <= maxTimeToLastRename)) return false;
    }
    if (++timesOutdated == maxTimesOutdated) {
        Item& first = *group.front();
        failWithServer(
            first,
            {.message = "This computer is too slow at present to replace " + first.file.path
                        + " without the risk of losing a newer version on the server. The upload will be retried."});
    }
    return true;
}

std::vector<TransferOption> Batch::renamingOf(const Item& item) const {
    std::vector<TransferOption> commands;
    if (item.plannedMode)
        commands.push_back({"quote", "-*SITE CHMOD " + octal(*item.plannedMode) + " " + item.temporary});
    commands.push_back({"quote", "-RNFR " + item.temporary});
    commands.push_back({"quote", "-RNTO " + item.name});
    return commands;
}

// In one block, which ends with the first command that is refused. Then its files are queried, and the remaining ones
// are renamed one by one.
void Batch::rename(Dialogue& dialogue, const std::string& folder, const Items& within) {
    TransferBlock block{
        .path = folder,
        .directory = true,
        .options = {{"head"}, {"ftp-method", "singlecwd"}},
        .atStop = TransferControl::AtStop::lastsOut};
    for (const auto* item : within) {
        for (auto& command : renamingOf(*item)) block.options.push_back(std::move(command));
    }
    dialogue.add(
        std::move(block),
        [this, folder, within](const BlockOutcome& outcome) {
            if (outcome.succeeded()) {
                for (auto* item : within) item->stage = Stage::renamed;
            } else if (within.size() == 1) {
                fail(*within.front(), failureFrom(outcome));
            } else {
                oneByOne.insert(folder);
            }
        },
        [within] {
            for (auto* item : within) ++item->renames;
        });
}

void Batch::settleRenamed(const Items& chosen) {
    for (auto* item : chosen) {
        if (item->stage == Stage::renamed) settle(*item);
    }
}

void Batch::settle(Item& item) {
    const auto wanted = item.plannedMode;
    if (wanted && item.after.mode && *item.after.mode != *wanted) traits.refusedToChangeModes();
    // If the server did not show the copy, its answer about the renamed file proves nothing.
    const bool shown = item.copyBefore.presence == RemoteFacts::Presence::present;
    if (!shown || wentLive(item.size(), item.copyBefore, item.liveBefore, item.after)) {
        finish(item, item.after.modified ? item.after : item.copyBefore);
        return;
    }
    // The server altered the file that it renamed: this is no edit of another user.
    const auto version = versionOf(item.after);
    if (version && item.after.modified == item.copyBefore.modified) item.lastSeen = *version;
    sendAgain(
        item, "The server confirmed the renaming of the uploaded " + item.file.path
                  + ", but has another file in its place, or none. The upload will be retried.");
}

} // namespace zembrastel
