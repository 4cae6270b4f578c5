// One file on its way to the place of the live one: what was sent of it, and what the server says of it.
//
// Plain state of a publication, changed by its steps (publish_batch.h) on their thread; and what follows from the
// server's answers, as pure functions.
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

// What the server says of the copy and of the live file, in one way.
struct Answer {
    std::optional<RemoteFacts> copy{};
    std::optional<RemoteFacts> live{};

    [[nodiscard]] bool isWhole() const { return copy && live; }
};

struct Item {
    enum class Stage {
        toSend,
        interrupted, // some of it is on the server: to be compared before it is continued
        sent,        // to be asked about
        complete,    // to go live
        renaming,    // perhaps live: to be asked about
        renamed,
        done
    };

    const FileToPublish& file;
    std::size_t number = 0; // of the staged copy among the files handed to curl
    std::string folder{};
    std::string name{};
    Stage stage = Stage::toSend;
    std::string temporary{};
    bool perhapsOnServer = false; // under the temporary name
    int sends = 0;                // from its beginning
    int breaks = 0;               // since the last progress
    PublishFailure problem{};     // the last of them
    int renames = 0;
    bool levelByLevel = false; // its folder was not found, and is to be made from its uppermost level on
    LastSeen lastSeen = file.lastSeen;
    std::array<Answer, 2> answers{}; // by way
    bool bothWays = false;           // one way of asking was not enough for a decision
    RemoteFacts copy{};              // the answers taken together
    RemoteFacts live{};
    std::optional<unsigned> plannedMode{};    // permission bits that the copy gets before it goes live
    std::optional<ServerVersion> announced{}; // the copy as it was announced to be going live
    RemoteFacts copyBefore{};                 // the renaming
    RemoteFacts liveBefore{};
    RemoteFacts after{}; // what is live after it

    // The server's copy begins with so many bytes of the file, beyond doubt; after them comes the part that is sent.
    std::uint64_t confirmed = 0;
    std::uint64_t part = 0;
    std::chrono::nanoseconds partTook{}; // the part before it, which was so long; 0 before the first
    std::chrono::steady_clock::time_point partBegan{};

    [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(file.fingerprint.size); }
    [[nodiscard]] std::uint64_t expected() const { return confirmed + part; } // size of the copy
    [[nodiscard]] bool isPart() const { return expected() < size(); }
    [[nodiscard]] bool isOpen() const { return stage != Stage::done; }
    [[nodiscard]] Answer& by(Way way) { return answers.at(static_cast<std::size_t>(way)); }

    // The live file is to be asked about anew, in each way: an answer of an earlier conversation is too old.
    void forgetLive() {
        for (auto& answer : answers) answer.live.reset();
        if (stage == Stage::complete) stage = Stage::sent;
    }
};

using Items = std::vector<Item*>;

[[nodiscard]] std::map<std::string, Items> byFolder(const Items& items);

// In groups of so many, the last one excepted.
[[nodiscard]] std::vector<Items> inGroups(const Items& items, std::size_t length);

// The failure of a file for which a block ended so.
[[nodiscard]] PublishFailure failureFrom(const BlockOutcome& outcome);

// Nullopt where the server gives no date.
[[nodiscard]] std::optional<ServerVersion> versionOf(const RemoteFacts& facts);

// Sets `copy` and `live` to what is known when the ways of asking are taken together: the more favourable answer
// counts, since servers have reasons of many kinds to answer badly in one of them. That a copy is absent takes both:
// some servers refuse every SIZE.
void combine(Item& item);

// A renaming of which the end was not seen has taken place.
[[nodiscard]] bool isLive(const Item& item);

// The permission bits that the copy must get so that the live file keeps its own. Nullopt where they are equal, or the
// server does not show them.
[[nodiscard]] std::optional<unsigned> modeToKeep(const Item& item);

} // namespace zembrastel
