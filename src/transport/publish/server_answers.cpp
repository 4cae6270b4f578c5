#include "transport/publish/server_answers.h"

#include "model/error.h"
#include "platform/text.h"
#include "transport/listing/listing_parsers.h"

#include <algorithm>
#include <charconv>

namespace zembrastel {
namespace {

using Presence = RemoteFacts::Presence;

constexpr std::size_t codeLength = 3;

// Servers leave entries out of listings that are longer than a limit of theirs, and say nothing of it.
constexpr std::size_t longListing = 2000;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

RemoteFacts factsOf(const RemoteEntry& entry) {
    return {.presence = Presence::present, .modified = entry.modified, .size = entry.size, .mode = entry.mode};
}

// Servers show other characters in different ways.
bool isPlain(std::string_view name) {
    return std::ranges::all_of(name, [](char byte) { return byte > ' ' && byte < '\x7f'; });
}

// The lines between "213-Status follows:" and "213 End of status". Empty if there is no such reply at the end.
std::string statusLines(std::string_view replies) {
    const auto lines = split(replies, '\n');
    auto last = lines.rbegin();
    while (last != lines.rend() && trimmed(*last).empty()) ++last;
    if (last == lines.rend()) return {};
    const auto code = last->substr(0, codeLength);
    if (!last->starts_with("21") || last->substr(codeLength, 1) != " ") return {};
    const std::string opening = std::string(code) + '-';
    std::vector<std::string_view> within;
    for (auto line = last + 1; line != lines.rend(); ++line) {
        if (line->starts_with(opening)) {
            std::ranges::reverse(within);
            std::string text;
            for (const auto each : within) text.append(trimmed(each)) += '\n';
            return text;
        }
        within.push_back(*line);
    }
    return {};
}

} // namespace

TransferBlock commandsIn(const std::string& folder, const std::vector<std::string>& commands) {
    TransferBlock block{
        .path = folder, .directory = true, .options = {{"head"}, {"dump-header", "-"}, {"ftp-method", "singlecwd"}}};
    for (const auto& command : commands) block.options.push_back({"quote", "-*" + command});
    return block;
}

Replies::Replies(const BlockOutcome& outcome, std::size_t commands) {
    if (!outcome.succeeded()) return;
    Reply reply;
    for (const auto line : split(outcome.output, '\n')) {
        // Of a reply of several lines the last one has a blank after the code.
        const bool last = line.size() > codeLength && line[codeLength] == ' '
                          && std::all_of(line.begin(), line.begin() + codeLength, isDigit);
        if (last) {
            reply.line = trimmed(line);
            replies.push_back(std::exchange(reply, {}));
        } else if (line.starts_with(' ')) {
            reply.facts = trimmed(line);
        }
    }
    if (replies.size() < commands) replies.clear();
    replies.erase(replies.begin(), replies.end() - static_cast<std::ptrdiff_t>(std::min(commands, replies.size())));
}

std::optional<std::string_view> Replies::after(std::string_view code, std::size_t number) const {
    if (number >= replies.size() || !replies[number].line.starts_with(code)) return std::nullopt;
    return trimmed(std::string_view(replies[number].line).substr(code.size()));
}

bool Replies::isUnknownCommand(std::size_t number) const {
    return after("500", number) || after("502", number) || after("504", number);
}

RemoteFacts Replies::datesAndSizes(std::size_t number) const {
    const auto date = after("213", number);
    const auto size = after("213", number + 1);
    if (!date && !size) {
        const bool absent = after("550", number) || after("550", number + 1);
        return {.presence = absent ? Presence::absent : Presence::unknown};
    }
    RemoteFacts found{.presence = Presence::present};
    if (date) found.modified = parseFTPDate(*date);
    std::uint64_t bytes = 0;
    if (size && std::from_chars(size->data(), size->data() + size->size(), bytes).ec == std::errc()) {
        found.size = bytes;
    }
    return found;
}

RemoteFacts Replies::facts(std::size_t number) const {
    if (after("550", number)) return {.presence = Presence::absent};
    if (!after("250", number)) return {};
    try {
        // The path that follows the facts may be of any form.
        const std::string& line = replies[number].facts;
        const auto entries = parseMLSD(line.substr(0, line.find(' ')) + " file\n");
        if (entries.size() == 1 && !entries.front().directory) return factsOf(entries.front());
    } catch (const SyncError&) {
        // The server is queried in another way.
    }
    return {};
}

Listing::Listing(const BlockOutcome& outcome) {
    if (!outcome.succeeded() || !isValidUtf8(outcome.output)) return;
    cut = isCutShort(outcome.output);
    if (cut) return;
    try {
        for (auto& entry : parseMLSD(outcome.output)) {
            ++count;
            lowered.insert(asciiLowercase(entry.name));
            if (!entry.directory) files.try_emplace(entry.name, entry);
        }
        readable = true;
    } catch (const SyncError&) {
        // Then each file is queried on its own.
    }
}

RemoteFacts Listing::find(const std::string& name) const {
    if (!readable) return {};
    if (const auto found = files.find(name); found != files.end()) return factsOf(found->second);
    if (count >= longListing || lowered.contains(asciiLowercase(name))) return {};
    return {.presence = Presence::absent};
}

StatusListing::StatusListing(const BlockOutcome& outcome) {
    if (!outcome.succeeded() || !isValidUtf8(outcome.output)) return;
    const std::string lines = statusLines(outcome.output);
    try {
        const auto entries = parseLIST(lines);
        for (const auto& entry : entries) {
            if (!entry.directory && entry.size) sizes.try_emplace(entry.name, *entry.size);
        }
        readable = !entries.empty() && entries.size() < longListing;
    } catch (const SyncError&) {
        // Then each file is queried on its own.
    }
    lowered = asciiLowercase(lines);
}

RemoteFacts StatusListing::find(const std::string& name) const {
    if (!readable || !isPlain(name)) return {};
    if (const auto found = sizes.find(name); found != sizes.end())
        return {.presence = Presence::present, .size = found->second};
    // Such as a link, a folder, or a name in other letters.
    const std::string word = ' ' + asciiLowercase(name);
    const bool mayBeThere =
        lowered.find(word + '\n') != std::string::npos || lowered.find(word + ' ') != std::string::npos;
    return {.presence = mayBeThere ? Presence::unknown : Presence::absent};
}

} // namespace zembrastel
