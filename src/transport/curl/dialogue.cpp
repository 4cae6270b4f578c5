#include "transport/curl/dialogue.h"

#include "model/error.h"
#include "transport/ftp_transport.h"

#include <algorithm>
#include <utility>

namespace zembrastel {

void Dialogue::add(TransferBlock block, Ended ended, std::function<void()> begins) {
    if (login == ServerTraits::Login::manyWithTls12 && transport.profile.transport != TransferProtocol::ftp) {
        block.options.push_back({"tls-max", "1.2"});
    }
    const bool data = std::ranges::none_of(block.options, [](const auto& option) { return option.key == "head"; });
    const auto commands = std::ranges::count(block.options, "quote", &TransferOption::key);
    const bool listing = block.directory && data;
    if (data && transport.profile.transport != TransferProtocol::ftp) setTimer(block);
    plan.blocks.push_back(std::move(block));
    auto begin = [begins = std::move(begins)] {
        if (begins) begins();
        return true;
    };
    steps.push_back(
        {.begins = std::move(begin),
         .ended = std::move(ended),
         .data = data,
         .commands = data ? 0 : static_cast<std::size_t>(commands),
         .listing = listing});
}

// curl 7.88 watches the data connection alone while it makes that one secure. If the reply to its TYPE command comes
// meanwhile, curl sees it at its next timer. That of connecting (200 ms) is the first one, and a second passes if the
// reply comes after it: measured with proftpd at 20 to 150 ms there and back.
void Dialogue::setTimer(TransferBlock& block) const {
    using std::chrono::milliseconds;
    constexpr milliseconds margin{20};
    const auto reply = transport.traits->replyTime();
    if (!reply) return;
    const auto timer = std::chrono::ceil<milliseconds>(2 * *reply) + margin;
    block.options.push_back({"happy-eyeballs-timeout-ms", std::to_string(timer.count())});
}

void Dialogue::addPause(std::function<bool()> decide, TransferControl::AtStop atStop) {
    plan.blocks.push_back({.path = "", .pause = true, .atStop = atStop});
    steps.push_back({.begins = std::move(decide), .ended = {}, .data = false, .commands = 0, .listing = false});
}

void Dialogue::run(
    std::vector<int> files, const std::function<void(const ChildProcess&)>& look,
    std::optional<std::uint64_t> maxWritten) {
    if (plan.blocks.empty()) return;
    plan.files = std::move(files);
    plan.maxWritten = maxWritten;
    const ConversationEvents events{
        .begins = [this](std::size_t block) { return steps[block].begins(); },
        .ended = [this](std::size_t block, const BlockOutcome& outcome) { return take(block, outcome); },
        .look = look};
    converse(transport.profile, transport.password, *transport.control, plan, events);
}

DataConnection Dialogue::connectionOf(std::size_t block) const {
    const auto end = steps.begin() + static_cast<std::ptrdiff_t>(block);
    const bool further =
        steps[block].data && std::any_of(steps.begin(), end, [](const Step& step) { return step.data; });
    if (transport.profile.transport == TransferProtocol::ftp || !further) return DataConnection::first;
    return login == ServerTraits::Login::manyTransfers ? DataConnection::furtherTls13 : DataConnection::further;
}

bool Dialogue::take(std::size_t block, const BlockOutcome& outcome) {
    if (!outcome.succeeded()) {
        scope = scopeOf(outcome, connectionOf(block));
        if (scope != FailureScope::file) {
            broken = outcome;
            return false;
        }
    }
    if (plan.blocks[block].pause) return true;
    progressed = true;
    learnReplyTime(block, outcome.took);
    steps[block].ended(outcome);
    return !over;
}

// The first block has the login as well.
void Dialogue::learnReplyTime(std::size_t block, std::chrono::nanoseconds took) const {
    constexpr std::size_t ofEachBlock = 1;         // the command that every operation begins with
    constexpr std::size_t roundTripsOfListing = 5; // at least: EPSV, MLSD and its two replies
    if (block == 0) return;
    // One command alone is no measure: changing the folder took as long, and a status has a long reply.
    if (steps[block].commands > 1) {
        const std::size_t commands = steps[block].commands + ofEachBlock;
        transport.traits->learnReplyTime(took / commands, commands);
    }
    if (steps[block].listing) {
        transport.traits->repliesWithin(took / roundTripsOfListing);
        transport.traits->learnListingTime(took);
    }
}

void Persistence::brokeOff(const Dialogue& dialogue, bool progressed) {
    constexpr int maxBarren = 2;
    const CurlCode code = dialogue.broken->code;
    const bool tlsTooOld = dialogue.login == ServerTraits::Login::manyWithTls12 && code == CurlCode::tlsFailed;
    if ((dialogue.scope == FailureScope::furtherData || tlsTooOld) && traits.wasRefused(dialogue.login)) return;
    fruitless = progressed ? 0 : fruitless + 1;
    // A write fails for a listing without an end, or on a full disk. TLS may have failed for a data connection alone.
    const bool isFinal =
        code == CurlCode::writeFailed
        || (!progressed && (code == CurlCode::timedOut || (isBeforeLogin(code) && code != CurlCode::tlsFailed)));
    if (isFinal || fruitless == maxBarren) throw TransferError(code, dialogue.broken->message, dialogue.broken->reply);
}

} // namespace zembrastel
