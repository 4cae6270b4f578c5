#include "transport/publish/publish_decision.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zembrastel {
namespace {

using Presence = RemoteFacts::Presence;

bool differ(const std::optional<std::uint64_t>& a, const std::optional<std::uint64_t>& b) { return a && b && *a != *b; }

bool differ(const std::optional<RemoteDate>& a, const std::optional<RemoteDate>& b) {
    return a && b && std::abs((*a - *b).count()) >= 1;
}

} // namespace

bool isOtherThan(const LastSeen& lastSeen, const RemoteFacts& live) {
    if (live.presence != Presence::present) return false;
    if (std::holds_alternative<KnownAbsent>(lastSeen)) return live.size || live.modified;
    const auto* seen = std::get_if<ServerVersion>(&lastSeen);
    return seen != nullptr && (differ(live.size, seen->size) || differ(live.modified, seen->modified));
}

Verdict verdict(std::uint64_t sent, const RemoteFacts& copy, const LastSeen& lastSeen, const RemoteFacts& live) {
    if (isOtherThan(lastSeen, live)) return Verdict::keepLive;
    if (copy.presence == Presence::absent || differ(copy.size, sent)) return Verdict::sendAgain;
    return copy.size ? Verdict::publish : Verdict::publishUnconfirmed;
}

bool wentLive(std::uint64_t sent, const RemoteFacts& copy, const RemoteFacts& before, const RemoteFacts& after) {
    if (after.presence == Presence::unknown) return true;
    if (after.presence == Presence::absent || differ(after.size, sent)) return false;
    if (!differ(after.modified, copy.modified)) return true;
    // Some servers give a file that is renamed a new date.
    return before.presence != Presence::present || !after.modified || before.modified != after.modified;
}

FailureScope scopeOf(const BlockOutcome& outcome, DataConnection data) {
    using enum CurlCode;
    const auto isOneOf = [&](auto... codes) { return ((outcome.code == codes) || ...); };
    const bool refused = outcome.reply == FtpReply::noDataConnection || outcome.reply == FtpReply::sessionNotReused;
    const bool furtherRefused = data != DataConnection::first && refused && isOneOf(partialFile, uploadRefused);
    const bool furtherBroken = data == DataConnection::furtherTls13 && isOneOf(partialFile, sendFailed, receiveFailed);
    if (furtherRefused || furtherBroken) return FailureScope::furtherData;
    const bool ofOneFile = isOneOf(
        badUrl, noSuchFolder, partialFile, transferRefused, commandRefused, uploadRefused, readFailed, noSpace,
        noSuchFile);
    return ofOneFile ? FailureScope::file : FailureScope::server;
}

bool isBeforeLogin(CurlCode code) {
    using enum CurlCode;
    constexpr std::array codes{proxyNotFound,        hostNotFound, notConnected, tlsFailed,
                               untrustedCertificate, tlsRefused,   loginRefused, wrongKey};
    return std::ranges::find(codes, code) != codes.end();
}

std::size_t batchLength(std::span<const std::uint64_t> sizes) {
    constexpr std::size_t maxFiles = 256;
    constexpr std::uint64_t maxBytes = std::uint64_t{64} << 20;
    std::uint64_t sum = 0;
    std::size_t length = 0;
    for (const auto size : sizes) {
        if (length == maxFiles || (length > 0 && size > maxBytes - sum)) break;
        sum += size;
        ++length;
        if (sum >= maxBytes) break;
    }
    return length;
}

} // namespace zembrastel
