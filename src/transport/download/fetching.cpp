#include "transport/download/fetching.h"

#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "transport/curl/dialogue.h"
#include "transport/ftp_transport.h"
#include "transport/listing/listing_parsers.h"
#include "transport/listing/remote_queries.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace zembrastel {
namespace {

using Facts = FTPTransport::FileFacts;

// What curl may write beyond the reported size: its own messages, and the growth of the file meanwhile.
constexpr std::uint64_t tolerance = std::uint64_t{64} << 10;

// For files of this size and more the date is requested first, so that an interrupted download can continue.
constexpr std::uint64_t worthContinuing = std::uint64_t{1} << 20;

bool differ(RemoteDate a, RemoteDate b) { return std::abs((a - b).count()) >= 1; }

bool differ(const Facts& a, const Facts& b) {
    return differ(a.modified, b.modified) || (a.size && b.size && *a.size != *b.size);
}

// True if the server no longer has the file or its folder.
bool isMissing(const QueryFailure& failure) {
    return failure.code == CurlCode::noSuchFile || failure.code == CurlCode::noSuchFolder;
}

struct Item {
    const FileToFetch& file;
    std::size_t number = 0;
    std::optional<std::uint64_t> expected = file.size;
    std::optional<Facts> before{}; // the version that is being fetched
    bool asked = false;            // for that version, since the last attempt
    bool isTooLong = false;        // longer than reported: fetched once more, alone, by its own size
    bool mayContinue = true;
    std::uint64_t kept = 0; // bytes of an earlier attempt
    int fruitless = 0;      // attempts in a row without progress
    bool begun = false;
    bool arrived = false; // complete, but not yet compared with the version before
    bool toVerify = false;
    bool done = false;
    std::exception_ptr failure{}; // reported in the order of the files

    [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(file.into.fingerprint().size); }
};

class Fetching {
public:
    Fetching(const FTPTransport& used, const std::vector<FileToFetch>& files, const FetchEvents& called)
        : transport(used), events(called), persistence(*used.traits) {
        items.reserve(files.size());
        for (const auto& file : files) items.push_back({.file = file, .number = items.size()});
    }

    void run() {
        for (;;) {
            transport.control->check();
            askAboutVersions();
            reportFailures();
            if (std::ranges::all_of(items, &Item::done)) return;
            attempt();
        }
    }

private:
    void askAboutVersions() {
        std::vector<Item*> asked;
        std::vector<std::string> paths;
        for (auto& item : items) {
            const bool isWanted =
                item.file.version || item.kept > 0 || !item.expected || *item.expected >= worthContinuing;
            if (item.done || item.asked || item.failure || !isWanted) continue;
            asked.push_back(&item);
            paths.push_back(item.file.path);
        }
        const auto answers = askAboutFiles(transport, paths);
        for (std::size_t i = 0; i < answers.size(); ++i) {
            asked[i]->asked = true;
            try {
                take(*asked[i], answers[i]);
            } catch (const SyncError&) {
                asked[i]->failure = std::current_exception();
            }
        }
    }

    static void take(Item& item, const AnswerAboutFile& answer) {
        const auto& [path, into, told, version] = item.file;
        if (version) {
            const auto* failure = std::get_if<QueryFailure>(&answer);
            const bool isGone = failure != nullptr && isMissing(*failure);
            const auto facts = isGone ? std::nullopt : std::optional(readFacts(resultOf(answer), path));
            if (!item.before && (isGone || differ(facts->modified, *version))) {
                throw ChangedMeanwhile(
                    path + " changed on the server after the comparison. Check again for the latest version.");
            }
            if (isGone || (item.before && differ(*facts, *item.before))) throw changedDuring(path);
            if (!item.before) item.expected = facts->size;
            item.before = facts;
            return;
        }
        if (!item.expected) item.expected = findContentLength(resultOf(answer));
        const auto facts = factsIfReported(answer, path);
        if (item.before && (!facts || differ(*facts, *item.before))) item.kept = 0;
        item.before = facts;
    }

    static std::optional<Facts> factsIfReported(const AnswerAboutFile& answer, const std::string& path) {
        try {
            return readFacts(resultOf(answer), path);
        } catch (const SyncError&) {
            return std::nullopt; // without a date the download cannot be continued
        }
    }

    static ChangedMeanwhile changedDuring(const std::string& path) {
        return ChangedMeanwhile{
            path + " changed on the server during the download. The local copy was kept; check again."};
    }

    // Those that come before the next one to be fetched.
    void reportFailures() {
        for (auto& item : items) {
            if (item.done) continue;
            if (!item.failure) return;
            begin(item);
            fail(item, item.failure);
        }
    }

    void attempt() {
        Dialogue dialogue(transport, transport.traits->login());
        std::vector<int> files;
        std::uint64_t most = 0;
        bool limited = true;
        for (auto& item : items) {
            if (item.done) continue;
            if (item.failure || (item.isTooLong && !files.empty())) break;
            add(dialogue, item, files.size());
            files.push_back(item.file.into.descriptor());
            most = std::max(most, std::min(item.expected.value_or(0), UINT64_MAX - tolerance) + tolerance);
            limited = limited && item.expected;
            if (item.isTooLong || dialogue.login == ServerTraits::Login::oneTransfer) break;
        }
        std::function<void(const ChildProcess&)> look;
        if (transport.observer != nullptr) {
            look = [this](const ChildProcess&) {
                if (current != nullptr) transport.observer->fileMoved(current->size());
            };
        }
        const auto limit = limited ? std::optional(most) : std::nullopt;
        dialogue.run(std::move(files), look, limit);
        for (auto& item : items) {
            if (item.toVerify) verify(item);
        }
        if (dialogue.broken) breakDown(dialogue, limit);
        current = nullptr;
    }

    void add(Dialogue& dialogue, Item& item, std::size_t descriptor) {
        std::vector<TransferOption> options{{"output", ChildProcess::filePathOf(descriptor)}, {"remote-time"}};
        if (item.kept > 0) options.push_back({"continue-at", std::to_string(item.kept)});
        const bool compares = item.file.version || item.kept > 0;
        dialogue.add(
            {.path = item.file.path, .options = std::move(options)},
            [this, &item, &dialogue, compares](const BlockOutcome& outcome) {
                take(item, outcome, dialogue, compares);
            },
            [this, &item] { begin(item); });
        if (!compares) return;
        dialogue.add(factsBlock(item.file.path), [this, &item, &dialogue](const BlockOutcome& outcome) {
            if (item.arrived) compare(item, outcome, dialogue);
        });
    }

    void begin(Item& item) {
        current = &item;
        if (transport.observer != nullptr) transport.observer->fileBegins(item.file.path, item.expected);
        if (!std::exchange(item.begun, true)) events.begins(item.number);
    }

    void take(Item& item, const BlockOutcome& outcome, Dialogue& dialogue, bool compares) {
        if (outcome.succeeded()) {
            item.arrived = compares;
            if (!compares) complete(item, dialogue);
        } else if (outcome.code == CurlCode::partialFile) {
            interrupt(item, outcome.message);
            dialogue.over = true; // the order of the files stays
        } else {
            fail(item, std::make_exception_ptr(SyncError(outcome.message)));
        }
    }

    // Completes the file if the server still has the version of before.
    void compare(Item& item, const BlockOutcome& outcome, Dialogue& dialogue) {
        item.arrived = false;
        try {
            if (!outcome.succeeded()) throw SyncError(outcome.message);
            if (!differ(readFacts(outcome.output, item.file.path), *item.before)) {
                complete(item, dialogue);
                return;
            }
            if (item.file.version) throw changedDuring(item.file.path);
            item.asked = false;
            interrupt(item, item.file.path + " was not downloaded: it changed on the server meanwhile.");
            item.kept = 0;
            dialogue.over = true;
        } catch (const SyncError&) {
            fail(item, std::current_exception());
        }
    }

    void complete(Item& item, Dialogue& dialogue) {
        if (item.expected && item.size() != *item.expected) {
            item.toVerify = true;
            dialogue.over = true;
            return;
        }
        finish(item);
    }

    // The listing may be wrong, or older than the file: the size that the server reports for the file itself counts.
    void verify(Item& item) {
        item.toVerify = false;
        if (transport.size(item.file.path) == item.size()) {
            finish(item);
        } else {
            refuse(item, std::to_string(item.size()));
        }
    }

    void refuse(Item& item, const std::string& sent) {
        fail(
            item, std::make_exception_ptr(SyncError(
                      item.file.path + " was not downloaded: the server reported a size of "
                      + std::to_string(*item.expected) + " bytes and sent " + sent + ".")));
    }

    // Remembers how much of an interrupted download arrived. True if that is more than before.
    static bool keepPart(Item& item) {
        const auto size = item.size();
        item.asked = false;
        const bool isPart = item.mayContinue && item.before && item.before->size && size <= *item.before->size;
        const auto before = std::exchange(item.kept, isPart ? size : 0);
        return item.kept > before;
    }

    void interrupt(Item& item, const std::string& message) {
        item.fruitless = keepPart(item) ? 0 : item.fruitless + 1;
        if (item.fruitless > 1) fail(item, std::make_exception_ptr(SyncError(message)));
    }

    void breakDown(const Dialogue& dialogue, const std::optional<std::uint64_t>& limit) {
        const CurlCode code = dialogue.broken->code;
        bool progressed = dialogue.progressed;
        if (current != nullptr) {
            auto& item = *current;
            if (limit && item.size() >= *limit) {
                fetchBySize(item);
                return;
            }
            if (code == CurlCode::writeFailed) {
                const auto why = whyNotWritten(item.file.into.descriptor());
                throw SyncError(dialogue.broken->message + (why.empty() ? "" : ": " + why));
            }
            if (item.kept > 0 && (code == CurlCode::restartRefused || code == CurlCode::nothingToContinue)) {
                item.mayContinue = false;
                (void)keepPart(item);
                return;
            }
            progressed = keepPart(item) || progressed;
        }
        persistence.brokeOff(dialogue, progressed);
    }

    // The file has grown since it was listed, or the listing is wrong.
    void fetchBySize(Item& item) {
        if (item.isTooLong) {
            refuse(item, "more");
            return;
        }
        item.isTooLong = true;
        item.kept = 0;
        item.expected = transport.size(item.file.path).value_or(*item.expected);
    }

    void finish(Item& item) {
        item.done = true;
        current = nullptr;
        events.fetched(item.number);
    }

    void fail(Item& item, const std::exception_ptr& why) {
        item.done = true;
        current = nullptr;
        events.failed(item.number, why);
    }

    const FTPTransport& transport;
    const FetchEvents& events;
    Persistence persistence;
    std::vector<Item> items;
    Item* current = nullptr; // the one that is being fetched
};

} // namespace

void fetch(const FTPTransport& transport, const std::vector<FileToFetch>& files, const FetchEvents& events) {
    Fetching(transport, files, events).run();
}

} // namespace zembrastel
