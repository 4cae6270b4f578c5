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

// What the program knows of the server's file before an upload.
struct NothingKnown {}; // whatever is there may be replaced
struct KnownAbsent {};
using LastSeen = std::variant<NothingKnown, KnownAbsent, ServerVersion>;

// What the server reports about one file now.
struct RemoteFacts {
    enum class Presence { unknown, absent, present };
    Presence presence = Presence::unknown;
    std::optional<RemoteDate> modified = std::nullopt;
    std::optional<std::uint64_t> size = std::nullopt;
    std::optional<unsigned> mode = std::nullopt; // permission bits
};

// True if the server's file is another version than the one last seen. A fact that the server does not report counts as
// equal. So do dates less than a second apart, since many servers keep whole seconds only.
[[nodiscard]] bool isOtherThan(const LastSeen& lastSeen, const RemoteFacts& live);

// What to do with a complete copy under its temporary name.
enum class Verdict {
    publish,
    publishUnconfirmed, // the server does not report the copy's size
    sendAgain,          // the copy is not what was sent
    keepLive            // the server's file changed since it was last seen
};
[[nodiscard]] Verdict verdict(
    std::uint64_t sent, const RemoteFacts& copy, const LastSeen& lastSeen, const RemoteFacts& live);

// True if `after` is the copy that the server claims to have renamed. False if it is the file that was there `before`,
// another file, or none.
[[nodiscard]] bool wentLive(
    std::uint64_t sent, const RemoteFacts& copy, const RemoteFacts& before, const RemoteFacts& after);

// What a failed block concerns.
enum class FailureScope {
    file,        // its file only
    server,      // the connection, the login or the server as a whole
    furtherData, // a further data connection of the same login
};
// The data connection of a failed block. Some servers refuse every further one of a login; this tells how such a
// refusal shows.
enum class DataConnection {
    first,       // or not protected
    further,     // only in the server's reply
    furtherTls13 // also as a broken connection
};
[[nodiscard]] FailureScope scopeOf(const BlockOutcome& outcome, DataConnection data);

// True if a conversation whose first block failed with this code did not log in.
[[nodiscard]] bool isBeforeLogin(CurlCode code);

// The number of files, from the first one on, that are staged together: at most 256 files and 64 MB, or one larger
// file. `sizes` is not empty.
[[nodiscard]] std::size_t batchLength(std::span<const std::uint64_t> sizes);

} // namespace zembrastel
