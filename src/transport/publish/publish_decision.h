// What the answers of a server about a file mean for its upload.
//
// Pure functions; any thread.
#pragma once

#include "model/server_version.h"
#include "transport/curl/conversation.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>

namespace zembrastel {

// What was known of a file on the server before it is replaced.
struct NothingKnown {}; // whatever is there may be replaced
struct KnownAbsent {};
using LastSeen = std::variant<NothingKnown, KnownAbsent, ServerVersion>;

// What the server says of one file now.
struct RemoteFacts {
    enum class Presence { unknown, absent, present };
    Presence presence = Presence::unknown;
    std::optional<RemoteDate> modified = std::nullopt;
    std::optional<std::uint64_t> size = std::nullopt;
    std::optional<unsigned> mode = std::nullopt; // permission bits
};

// Is the file on the server another one than the one last seen? What the server does not say, counts for equal: dates
// are equal within a second, since many servers have whole seconds alone.
[[nodiscard]] bool isOtherThan(const LastSeen& lastSeen, const RemoteFacts& live);

// Of a complete copy under its temporary name.
enum class Verdict {
    publish,
    publishUnconfirmed, // the server says nothing of the copy's size
    sendAgain,          // the copy is not what was sent
    keepLive            // the server's file changed since it was last seen
};
[[nodiscard]] Verdict verdict(
    std::uint64_t sent, const RemoteFacts& copy, const LastSeen& lastSeen, const RemoteFacts& live);

// Is `after` the copy that the server said it had renamed, and not what was there `before`, something else, or nothing?
[[nodiscard]] bool wentLive(
    std::uint64_t sent, const RemoteFacts& copy, const RemoteFacts& before, const RemoteFacts& after);

// What a failed block of a conversation is about.
enum class FailureScope {
    file,        // nothing beyond its file
    server,      // the connection, the login or the server as a whole
    furtherData, // a further data connection of the same login
};
// Of which data connection the failure is, and how sure that makes it that the server refused it for being a further
// one.
enum class DataConnection {
    first,       // or not protected
    further,     // a refusal shows in the server's reply alone
    furtherTls13 // a refusal may also show as a broken connection
};
[[nodiscard]] FailureScope scopeOf(const BlockOutcome& outcome, DataConnection data);

// Has a conversation that failed so at its first block never been let in?
[[nodiscard]] bool isBeforeLogin(CurlCode code);

// How many of the first files are staged together: 256 of at most 64 MB, or one that is larger. `sizes` is not empty.
[[nodiscard]] std::size_t batchLength(std::span<const std::uint64_t> sizes);

} // namespace zembrastel
