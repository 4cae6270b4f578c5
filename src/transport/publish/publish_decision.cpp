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

FailureScope scopeOf(int curlCode, std::string_view message, DataConnection data) {
    constexpr int partialFile = 18;
    constexpr int uploadFailed = 25;
    constexpr std::array brokenOff{partialFile, 55, 56};
    const bool refused = message.ends_with(" 425") || message.ends_with(" 522");
    const bool broken = std::ranges::find(brokenOff, curlCode) != brokenOff.end();
    if (data != DataConnection::first && refused && (curlCode == partialFile || curlCode == uploadFailed)) {
        return FailureScope::furtherData;
    }
    if (data == DataConnection::furtherTls13 && broken) return FailureScope::furtherData;
    constexpr std::array ofOneFile{
        3,            // a name that cannot be in a URL
        9,            // no such folder, or none that may be entered
        partialFile,  // or, of an upload, a reply that is not the one for a complete file
        19,           // a refused listing or download
        21,           // a refused command, such as RNTO
        uploadFailed, //
        26,           // the local file could not be read
        70,           // no space for this file
        78,           // no such file
    };
    return std::ranges::find(ofOneFile, curlCode) != ofOneFile.end() ? FailureScope::file : FailureScope::server;
}

bool isBeforeLogin(int curlCode) {
    // No address, no connection, and TLS or the login refused.
    constexpr std::array codes{5, 6, 7, 35, 60, 64, 67, 90};
    return std::ranges::find(codes, curlCode) != codes.end();
}

std::size_t batchLength(std::span<const std::uint64_t> sizes) {
    constexpr std::size_t mostFiles = 64;
    constexpr std::uint64_t mostBytes = std::uint64_t{64} << 20;
    std::uint64_t sum = 0;
    std::size_t length = 0;
    for (const auto size : sizes) {
        if (length == mostFiles || (length > 0 && size > mostBytes - sum)) break;
        sum += size;
        ++length;
        if (sum >= mostBytes) break;
    }
    return length;
}

} // namespace zembrastel
