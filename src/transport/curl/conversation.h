// One curl and all that it is to do on a server with one login: a list of blocks, one after another.
//
// Blocks its thread, on which it makes its calls. curl gets a small fixed environment, the local files as open
// descriptors, and the password through a pipe alone; what it says comes back through pipes, so none of it is ever in a
// file. Each block is one transfer with all the options that every operation has: nothing carries over from the one
// before but the connection and the login.
#pragma once

#include "transport/curl/curl_configuration.h"
#include "transport/transfer_control.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

class ChildProcess;

struct TransferBlock {
    std::string path; // relative to the profile's remote folder
    bool directory = false;
    std::vector<TransferOption> options{}; // after those that every operation has
};

struct TransferPlan {
    std::vector<TransferBlock> blocks;
    std::vector<int> files = {}; // borrowed; the options name them by ChildProcess::filePathOf()
    TransferControl::AtStop atStop = TransferControl::AtStop::ends;
    std::optional<std::uint64_t> maxWritten = std::nullopt; // no file may become longer: that ends the conversation
};

// How one block ended.
struct BlockOutcome {
    int code = 0;          // curl's; 0 when it succeeded
    std::string output{};  // what it wrote to its standard output; empty unless it succeeded
    std::string message{}; // for the user, the password masked; empty when it succeeded
    std::string words{};   // all that curl said on its standard error, as it stands: the password may be in it

    [[nodiscard]] bool succeeded() const { return code == 0; }
};

struct ConversationEvents {
    // The block of this index is being worked on.
    std::function<void(std::size_t block)> begins = {};

    // It has ended; called at once. False ends the conversation here.
    std::function<bool(std::size_t block, BlockOutcome outcome)> ended;

    // Called once an observationInterval.
    std::function<void(const ChildProcess& curl)> look = {};
};

// More output of one block than this ends the conversation, with a failure of the block: far more than a folder of a
// million items takes, and a listing without an end would fill the memory.
inline constexpr std::size_t mostBlockOutput = std::size_t{128} << 20;

// A step that lasts out a stop gets this much time.
inline constexpr std::chrono::milliseconds timeAfterStop{1000};

// Has curl work through the blocks of the plan. Their ends come in order and each once. They stop early after a call of
// `ended` that returned false, and when curl ends before its time: the last one is then the failure of the block that
// was under way, and what became of any later one is unknown.
//
// Throws Cancelled when the control is stopped, what curlConfiguration() throws, and the system's errors. What a call
// throws ends curl and is passed on. With AtStop::lastsOut a stop during the conversation does not end it at once, and
// is not thrown.
void converse(
    const Profile& profile, std::string_view password, TransferControl& control, const TransferPlan& plan,
    const ConversationEvents& events);

} // namespace zembrastel
