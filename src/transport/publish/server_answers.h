// What a server answers when it is asked about files: by commands about each of them, and by listings of their folders.
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

// Commands in a folder, one after another, with the server's replies as output. One that is refused does not keep the
// next from being sent. The folder is entered by one command and not level by level: over a long line each takes long.
[[nodiscard]] TransferBlock commandsIn(const std::string& folder, const std::vector<std::string>& commands);

// The server's replies to the last commands of a block, of which each has one: "213 20200101123456".
class Replies {
public:
    Replies(const BlockOutcome& outcome, std::size_t commands);

    // What follows the code in the reply of this number; nullopt for a reply of another code.
    [[nodiscard]] std::optional<std::string_view> after(std::string_view code, std::size_t number) const;

    // The server does not know the command (500, 502, 504).
    [[nodiscard]] bool isUnknownCommand(std::size_t number) const;

    // What the replies to MDTM and SIZE, of which the first has this number, say of a file.
    [[nodiscard]] RemoteFacts datesAndSizes(std::size_t number) const;

    // What the reply to MLST says of a file: one line of facts as in a listing.
    [[nodiscard]] RemoteFacts facts(std::size_t number) const;

private:
    struct Reply {
        std::string line{};  // the last, with the code
        std::string facts{}; // a line before it that begins with a blank
    };

    std::vector<Reply> replies;
};

// The entries of a folder (MLSD) by name.
class Listing {
public:
    explicit Listing(const BlockOutcome& outcome);

    [[nodiscard]] bool isReadable() const { return readable; }

    // A part of it was lost on the way: no reason to do without listings.
    [[nodiscard]] bool isCut() const { return cut; }

    // Unknown where the listing is no proof: where it cannot be read, is so long that servers leave entries out, or has
    // a name that is perhaps the same to the server.
    [[nodiscard]] RemoteFacts find(const std::string& name) const;

private:
    bool readable = false;
    bool cut = false;
    std::unordered_map<std::string, RemoteEntry> files;
    std::unordered_set<std::string> lowered; // names of all entries
    std::size_t count = 0;
};

} // namespace zembrastel
