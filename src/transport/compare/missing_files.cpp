#include "transport/compare/missing_files.h"

#include "platform/text.h"
#include "transport/curl/conversation.h"
#include "transport/ftp_transport.h"
#include "transport/listing/listing_parsers.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace zembrastel {
namespace {

using Presence = RemoteFacts::Presence;

constexpr std::size_t maxAsked = 200; // of each kind of name

Presence presenceBy(const BlockOutcome& outcome) {
    using enum CurlCode;
    if (outcome.succeeded()) return Presence::present;
    return outcome.code == noSuchFolder || outcome.code == noSuchFile ? Presence::absent : Presence::unknown;
}

// Asks about these files, in order, until the conversation ends.
void ask(
    const FTPTransport& transport, const std::vector<std::string>& paths,
    const std::function<void(const std::string& path, const BlockOutcome& outcome)>& answered) {
    if (paths.empty()) return;
    TransferPlan plan;
    for (const auto& path : paths) plan.blocks.push_back({.path = path, .options = {{"head"}}});
    const auto ended = [&](std::size_t block, const BlockOutcome& outcome) {
        answered(paths[block], outcome);
        return outcome.succeeded() || scopeOf(outcome, DataConnection::first) == FailureScope::file;
    };
    converse(transport.profile, transport.password, *transport.control, plan, {.ended = ended});
}

Answers presenceOf(const FTPTransport& transport, const std::vector<std::string>& paths) {
    Answers answers;
    ask(transport, paths,
        [&answers](const std::string& path, const BlockOutcome& outcome) { answers[path] = presenceBy(outcome); });
    // The files without an answer.
    for (const auto& path : paths) answers.try_emplace(path, Presence::unknown);
    return answers;
}

} // namespace

bool mayBeHidden(std::string_view path) { return path.starts_with('.') || path.find("/.") != std::string_view::npos; }

std::set<std::string, std::less<>> missingFiles(const std::vector<std::string>& unlisted, const Answers& answers) {
    const bool listingsAreRight = std::ranges::all_of(
        answers, [](const auto& answer) { return mayBeHidden(answer.first) || answer.second == Presence::absent; });
    std::set<std::string, std::less<>> missing;
    for (const auto& path : unlisted) {
        const auto answer = answers.find(path);
        const bool isAbsent =
            answer == answers.end() ? listingsAreRight && !mayBeHidden(path) : answer->second == Presence::absent;
        if (isAbsent) missing.insert(path);
    }
    return missing;
}

std::set<std::string, std::less<>> findMissing(
    const FTPTransport& transport, const std::vector<std::string>& unlisted, const std::optional<std::string>& listed) {
    if (unlisted.empty()) return {};
    std::vector<std::string> asked;
    if (listed) asked.push_back(*listed);
    std::array<std::size_t, 2> ofKind{};
    for (const auto& path : unlisted) {
        if (ofKind.at(mayBeHidden(path) ? 1 : 0)++ < maxAsked) asked.push_back(path);
    }
    Answers answers = presenceOf(transport, asked);
    if (listed && answers.extract(*listed).mapped() != Presence::present) return {};
    return missingFiles(unlisted, answers);
}

ServerVersions findHidden(const FTPTransport& transport, const std::vector<std::string>& unlisted) {
    std::vector<std::string> asked;
    std::ranges::copy_if(unlisted, std::back_inserter(asked), mayBeHidden);
    ServerVersions found;
    ask(transport, asked, [&found](const std::string& path, const BlockOutcome& outcome) {
        if (!outcome.succeeded() || !isValidUtf8(outcome.output)) return;
        const auto value = findLastModified(outcome.output);
        const auto date = value ? parseHttpDate(*value) : std::nullopt;
        if (date) found.set(path, {.modified = toRemoteDate(*date), .size = findContentLength(outcome.output)});
    });
    return found;
}

} // namespace zembrastel
