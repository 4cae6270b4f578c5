// Reads a server's answers about files: replies to commands about single files, and listings of their folders.
//
// Values; one thread at a time.
#pragma once

#include "transport/curl/conversation.h"
#include "transport/listing/remote_entry.h"
#include "transport/publish/publish_decision.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zembrastel {

// Commands in a folder, one after another, with the server's replies as output. After a refused command the next one is
// still sent. The folder is entered by one command, not level by level, which would be slow over a distant line.
[[nodiscard]] TransferBlock commandsIn(const std::string& folder, const std::vector<std::string>& commands);

// The server's replies to the last commands of a block, one for each: "213 20200101123456".
class Replies {
public:
    Replies(const BlockOutcome& outcome, std::size_t commands);

    // The text after the code in the reply of this number; nullopt for a reply with another code.
    [[nodiscard]] std::optional<std::string_view> after(std::string_view code, std::size_t number) const;

    // True if the server does not know the command (500, 502, 504).
    [[nodiscard]] bool isUnknownCommand(std::size_t number) const;

    // The facts of a file in the replies to MDTM and SIZE; the first one has this number.
    [[nodiscard]] RemoteFacts datesAndSizes(std::size_t number) const;

    // The facts of a file in the reply to MLST: one line as in a listing.
    [[nodiscard]] RemoteFacts facts(std::size_t number) const;

private:
    struct Reply {
        std::string line{};  // the last line, with the code
        std::string facts{}; // an earlier line that begins with a blank
    };

    std::vector<Reply> replies;
};

// The entries of a folder (MLSD) by name.
class Listing {
public:
    explicit Listing(const BlockOutcome& outcome);

    [[nodiscard]] bool isReadable() const { return readable; }

    // True if the listing is incomplete. Later listings can still be used.
    [[nodiscard]] bool isCut() const { return cut; }

    // Unknown if the listing proves nothing: it cannot be read, it is so long that servers shorten it, or it has a name
    // that the server may treat as the same.
    [[nodiscard]] RemoteFacts find(const std::string& name) const;

private:
    bool readable = false;
    bool cut = false;
    std::unordered_map<std::string, RemoteEntry> files;
    std::unordered_set<std::string> lowered; // names of all entries
    std::size_t count = 0;
};

// The names and sizes of a folder in the reply to STAT, which has the lines of LIST. It gives no dates.
class StatusListing {
public:
    explicit StatusListing(const BlockOutcome& outcome);

    // Present with its size; absent only if no line could mean this name, which must be plain ASCII; else unknown.
    [[nodiscard]] RemoteFacts find(const std::string& name) const;

private:
    bool readable = false;
    std::string lowered; // the lines, each with a line feed at its end
    std::unordered_map<std::string, std::uint64_t> sizes;
};

} // namespace zembrastel
