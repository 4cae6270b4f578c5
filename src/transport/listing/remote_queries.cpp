#include "transport/listing/remote_queries.h"

#include "platform/text.h"
#include "transport/curl/dialogue.h"
#include "transport/listing/listing_parsers.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <utility>

namespace zembrastel {
namespace {

using Entries = std::vector<RemoteEntry>;

// In one conversation. It limits the text that curl gets.
constexpr std::size_t maxBlocks = 300;

std::string cutMessage(const std::string& path) {
    const std::string folder = path.empty() ? "the remote folder" : path;
    return "The server sent only a part of the directory listing of " + folder + ". None of it is used.";
}

// True if `b` has every name of `a` that a listing must show.
bool shows(const Entries& b, const Entries& a) {
    std::vector<std::string_view> names;
    names.reserve(b.size());
    for (const auto& entry : b) names.push_back(entry.name);
    std::ranges::sort(names);
    return std::ranges::all_of(a, [&names](const RemoteEntry& entry) {
        return entry.name.starts_with('.') || std::ranges::binary_search(names, entry.name);
    });
}

// One listing of a folder, as far as the server has answered.
struct Answer {
    bool byMLSD = false;
    bool isUnknown = false; // the command
    int cuts = 0;
    bool settled = false;
    std::optional<Entries> entries = {}; // of an incomplete listing, the entries of its complete lines
    std::string failure = {};            // why it is incomplete
    CurlCode code = CurlCode::ok;        // curl's code, if it failed
    FtpReply reply = FtpReply::none;

    [[nodiscard]] bool isWhole() const { return entries && failure.empty(); }

    void take(const BlockOutcome& outcome, const std::string& path) {
        const bool cut = outcome.succeeded() ? isCutShort(outcome.output) : outcome.code == CurlCode::partialFile;
        isUnknown = byMLSD && outcome.code == CurlCode::transferRefused && isUnknownCommand(outcome.reply);
        settled = true;
        entries.reset();
        failure = outcome.message;
        code = outcome.code;
        reply = outcome.reply;
        if (outcome.succeeded()) read(outcome.output);
        if (cut) wasCut(path);
    }

    // An incomplete listing is requested once more.
    void wasCut(const std::string& path) {
        constexpr int maxCuts = 2;
        failure = cutMessage(path);
        settled = ++cuts == maxCuts;
    }

private:
    void read(std::string_view text) {
        try {
            if (!isValidUtf8(text)) throw SyncError("The server's filenames are not UTF-8.");
            const auto lines = text.substr(0, text.rfind('\n') + 1); // empty for an empty text
            entries = byMLSD ? parseMLSD(lines) : parseLIST(lines);
        } catch (const SyncError& error) {
            failure = error.what();
        }
    }
};

// The names in the server's replies to STAT; nullopt if STAT does not list the folder.
std::optional<Entries> readStatus(const BlockOutcome& outcome) {
    if (!outcome.succeeded() || !isValidUtf8(outcome.output)) return std::nullopt;
    Entries entries;
    bool lists = false;
    for (auto line : split(outcome.output, '\n')) {
        if (line.starts_with(' ')) line.remove_prefix(1);
        try {
            for (auto& entry : parseLIST(line)) entries.push_back(std::move(entry));
            lists = lists || !trimmed(line).empty();
        } catch (const SyncError&) {
            // Not a line of the listing.
        }
    }
    return lists ? std::optional(std::move(entries)) : std::nullopt;
}

struct AskedFolder {
    std::string path;
    // The first has the dates, if there are any; the second confirms it.
    std::array<Answer, 2> answers{};
    bool needsWitness = false;
    bool askedWitness = false;
    std::optional<Entries> witness{}; // the names from the control connection
    bool askedAgain = false;

    // Decides which listings are still needed. True if none is.
    [[nodiscard]] bool settle() {
        if (!std::ranges::all_of(answers, &Answer::settled)) return false;
        if (std::ranges::none_of(answers, &Answer::isWhole) || agree()) return true;
        if (!askedWitness) {
            needsWitness = true;
            return false;
        }
        if (witness) {
            for (auto& answer : answers) {
                if (answer.isWhole() && !shows(*answer.entries, *witness)) answer.wasCut(path);
            }
        } else if (!std::exchange(askedAgain, true)) {
            for (auto& answer : answers) {
                if (answer.isWhole() || answer.isUnknown) answer = {.byMLSD = answer.byMLSD && !answer.isUnknown};
            }
        }
        return std::ranges::all_of(answers, &Answer::settled);
    }

    [[nodiscard]] ListedEntries result() {
        auto& [first, second] = answers;
        if (!first.isWhole()) {
            if (!second.isWhole()) return QueryFailure{second.failure, second.code, second.reply};
            keepShown(*second.entries, *second.entries);
            return std::move(*second.entries);
        }
        // Some servers never end LIST with a line break. The other listing must still have the names of such a listing.
        if (!second.isWhole() && second.entries && !shows(*first.entries, *second.entries)) {
            return QueryFailure{second.failure, second.code, second.reply};
        }
        // If LIST cannot confirm it, MLSD is enough.
        keepShown(*first.entries, second.isWhole() ? *second.entries : *first.entries);
        return std::move(*first.entries);
    }

private:
    // Two listings with the same names are complete.
    [[nodiscard]] bool agree() const {
        const auto& [first, second] = answers;
        return first.isWhole() && second.isWhole() && !first.entries->empty() && shows(*first.entries, *second.entries)
               && shows(*second.entries, *first.entries);
    }
};

// Requests a listing over the control connection, whose loss is always noticed.
void askForStatus(Dialogue& dialogue, AskedFolder& folder) {
    dialogue.add(
        {.path = folder.path, .directory = true, .options = {{"head"}, {"dump-header", "-"}, {"quote", "-*STAT ."}}},
        [&folder](const BlockOutcome& outcome) {
            folder.askedWitness = true;
            folder.witness = readStatus(outcome);
        });
}

// Queries the server about all `items`: `plan` adds the blocks for an item, or none if the item is done.
template <class Item, class Plan>
void askAbout(const FTPTransport& transport, std::vector<Item>& items, const Plan& plan) {
    Persistence persistence(*transport.traits);
    for (;;) {
        Dialogue dialogue(transport, transport.traits->login());
        std::size_t blocks = 0;
        for (auto& item : items) {
            if (blocks >= maxBlocks) break;
            blocks += plan(dialogue, item);
        }
        if (dialogue.isEmpty()) return;
        dialogue.run({}, {});
        if (dialogue.broken) persistence.brokeOff(dialogue, dialogue.progressed);
    }
}

} // namespace

void FolderLister::list(const std::vector<std::string>& paths, const Take& take) {
    constexpr std::size_t maxTogether = 150;
    for (std::size_t done = 0; done < paths.size();) {
        const auto count = std::min(maxTogether, paths.size() - done);
        for (auto& listed : listTogether(std::span(paths).subspan(done, count))) take(done++, std::move(listed));
    }
}

std::vector<ListedEntries> FolderLister::listTogether(std::span<const std::string> paths) {
    std::vector<AskedFolder> folders;
    folders.reserve(paths.size());
    for (const auto& path : paths) {
        folders.push_back({.path = path});
        if (hasMLSD) {
            folders.back().answers.front().byMLSD = true;
        } else {
            folders.back().answers.front() = {.isUnknown = true, .settled = true};
        }
    }
    askAbout(transport, folders, [this](Dialogue& dialogue, AskedFolder& folder) -> std::size_t {
        if (folder.settle()) return 0;
        if (folder.needsWitness && !folder.askedWitness) {
            askForStatus(dialogue, folder);
            return 1;
        }
        std::size_t blocks = 0;
        for (auto& answer : folder.answers) {
            if (answer.settled) continue;
            // Such a login allows only one data transfer.
            if (dialogue.login == ServerTraits::Login::oneTransfer && !dialogue.isEmpty()) break;
            TransferBlock block{.path = folder.path, .directory = true};
            if (answer.byMLSD) block.options.push_back({"request", "MLSD"});
            dialogue.add(std::move(block), [this, &folder, &answer](const BlockOutcome& outcome) {
                answer.take(outcome, folder.path);
                if (!answer.isUnknown) return;
                hasMLSD = false;
                transport.traits->learnFromFailedMLSD(outcome.reply);
            });
            ++blocks;
        }
        return blocks;
    });
    std::vector<ListedEntries> listed;
    listed.reserve(folders.size());
    std::ranges::transform(folders, std::back_inserter(listed), &AskedFolder::result);
    return listed;
}

TransferBlock factsBlock(const std::string& path) { return {.path = path, .options = {{"head"}}}; }

FTPTransport::FileFacts readFacts(const std::string& output, std::string_view path) {
    if (const auto value = isValidUtf8(output) ? findLastModified(output) : std::nullopt) {
        if (const auto date = parseHttpDate(*value)) {
            return {.modified = toRemoteDate(*date), .size = findContentLength(output)};
        }
        throw SyncError("The server returned an unreadable modification date for " + std::string(path) + ".");
    }
    throw SyncError(
        "The server did not provide a modification date for " + std::string(path)
        + ". Uploads remain paused until you choose how to proceed.");
}

std::vector<AnswerAboutFile> askAboutFiles(const FTPTransport& transport, const std::vector<std::string>& paths) {
    struct Asked {
        const std::string& path;
        std::optional<AnswerAboutFile> answer{};
    };
    std::vector<Asked> files;
    files.reserve(paths.size());
    for (const auto& path : paths) files.push_back({path});
    askAbout(transport, files, [](Dialogue& dialogue, Asked& file) -> std::size_t {
        if (file.answer) return 0;
        dialogue.add(factsBlock(file.path), [&file](const BlockOutcome& outcome) {
            if (outcome.succeeded()) {
                file.answer = outcome.output;
            } else {
                file.answer = QueryFailure{outcome.message, outcome.code, outcome.reply};
            }
        });
        return 1;
    });
    std::vector<AnswerAboutFile> all;
    all.reserve(files.size());
    for (auto& file : files) all.push_back(std::move(*file.answer));
    return all;
}

} // namespace zembrastel
