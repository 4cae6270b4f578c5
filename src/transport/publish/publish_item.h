// One file of a publication: how much of it was sent, and what the server reports about it.
//
// The steps in publish_batch.h change these values on their thread. The functions are pure.
#pragma once

#include "transport/publish/publish_decision.h"
#include "transport/publish/publishing.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// The ways to ask a server about a file: on its own (MLST, or MDTM and SIZE), and by a listing of its folder (MLSD).
enum class Way : std::size_t { single, listing };

// What the server reports about the copy and the live file when it is asked in one way.
struct Answer {
    std::optional<RemoteFacts> copy{};
    std::optional<RemoteFacts> live{};

    [[nodiscard]] bool isComplete() const { return copy && live; }
};

struct Item {
    enum class Stage {
        toSend,
        interrupted, // some of it is on the server, and must be compared before the rest is sent
        sent,        // the server must be asked about it
        complete,    // can go live
        renaming,    // may be live: the server must be asked
        renamed,     // the server says so; it is asked once more
        done
    };

    const FileToPublish& file;
    std::size_t number = 0; // of the staged copy among the files handed to curl
    std::string folder{};
    std::string name{};
    Stage stage = Stage::toSend;
    std::string temporary{};
    bool perhapsOnServer = false; // under the temporary name
    int sends = 0;                // from the beginning of the file
    int interruptions = 0;        // since the last progress
    PublishFailure problem{};     // of the last interruption
    int renames = 0;
    bool levelByLevel = false; // its folder was not found: it is entered and created level by level
    LastSeen lastSeen = file.lastSeen;
    std::array<Answer, 2> answers{}; // by way
    bool bothWays = false;           // one way of asking was not enough for a decision
    RemoteFacts copy{};              // from the answers of both ways
    RemoteFacts live{};
    std::optional<unsigned> plannedMode{};    // permission bits that the copy gets before it goes live
    std::optional<ServerVersion> announced{}; // the copy, as `goingLive` reported it
    RemoteFacts copyBefore{};                 // before the rename
    RemoteFacts liveBefore{};
    RemoteFacts after{}; // the live file after the rename

    // The server's copy is known to begin with this number of bytes of the file. The part that is sent follows them.
    std::uint64_t confirmed = 0;
    std::uint64_t part = 0;
    std::chrono::nanoseconds partTook{}; // the previous part, of the same length; 0 before the first
    std::chrono::steady_clock::time_point partBegan{};

    [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(file.fingerprint.size); }
    [[nodiscard]] std::uint64_t expected() const { return confirmed + part; } // size of the copy
    [[nodiscard]] bool isPart() const { return expected() < size(); }
    [[nodiscard]] bool isOpen() const { return stage != Stage::done; }
    [[nodiscard]] Answer& by(Way way) { return answers.at(static_cast<std::size_t>(way)); }

    // Drops all answers about the live file: those of an earlier conversation are too old.
    void forgetLive() {
        for (auto& answer : answers) answer.live.reset();
        if (stage == Stage::complete) stage = Stage::sent;
    }
};

using Items = std::vector<Item*>;

[[nodiscard]] std::map<std::string, Items> byFolder(const Items& items);

// Groups of this length; the last one may be shorter.
[[nodiscard]] std::vector<Items> inGroups(const Items& items, std::size_t length);

// The failure of a file whose block ended like this.
[[nodiscard]] PublishFailure failureFrom(const BlockOutcome& outcome);

// Nullopt if the server does not report the date.
[[nodiscard]] std::optional<ServerVersion> versionOf(const RemoteFacts& facts);

// Sets `copy` and `live` from the answers of both ways. The more favourable answer counts: one way can fail for many
// reasons. A copy is absent only if both ways report that, since some servers refuse every SIZE.
void combine(Item& item);

// True if a rename whose end was not seen has taken place.
[[nodiscard]] bool isLive(const Item& item);

// The permission bits that the copy must get so that the live file keeps its own. Nullopt if the copy has them already,
// or the server does not report them.
[[nodiscard]] std::optional<unsigned> modeToKeep(const Item& item);

} // namespace zembrastel
