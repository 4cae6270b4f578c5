// One run of curl and everything that it does on a server with one login: a list of blocks, one after another.
//
// Blocks its thread, on which it makes its calls. curl gets a small fixed environment, the local files as open
// descriptors, and the password only through a pipe. Its output comes back through pipes, so none of it is ever in a
// file. Each block is one transfer with all the options that every operation has: only the connection and the login
// carry over from the block before.
//
// curl reads its whole configuration before it starts, so blocks cannot be added later. But a pause between blocks
// holds curl back until the program has decided: the block reads one byte from a pipe, as a file:// transfer, and the
// byte is written when the decision is made. If the decision is against the planned blocks, curl is ended.
#pragma once

#include "transport/curl/curl_configuration.h"
#include "transport/curl/transfer_error.h"
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

inline constexpr const char* curlExecutable = "/usr/bin/curl";

// "7.88.1"; empty if curl does not answer within half a second. Starts curl and waits for it.
[[nodiscard]] std::string curlVersion();

struct TransferBlock {
    std::string path; // relative to the profile's remote folder
    bool directory = false;
    std::vector<TransferOption> options{}; // after those that every operation has
    bool pause = false;                    // waits for the program, and has no path and no options
    TransferControl::AtStop atStop = TransferControl::AtStop::ends; // from here on; of a pause: once it is over
    std::string facts{}; // what to report at the block's end, also of a failure: variables of curl's "write-out"
};

struct TransferPlan {
    std::vector<TransferBlock> blocks;
    std::vector<int> files = {}; // borrowed; the options name them by ChildProcess::filePathOf()
    std::optional<std::uint64_t> maxWritten = std::nullopt; // no file may become longer: that ends the conversation
};

// The time since the machine was started, including suspensions.
[[nodiscard]] std::chrono::nanoseconds sinceBoot();

// How one block ended.
struct BlockOutcome {
    CurlCode code = CurlCode::ok;
    FtpReply reply = FtpReply::none;  // the server's last one
    std::string output{};             // what it wrote to its standard output; empty unless it succeeded
    std::string message{};            // for the user, the password masked; empty if the block succeeded
    std::string facts{};              // the requested ones
    std::string words{};              // curl's unchanged standard error, which may contain the password
    std::chrono::microseconds took{}; // by curl's clock; 0 if curl ended in it

    // Moments, in time since boot, at which the block had not begun yet, and had not ended yet: each at most 0.2 s
    // early, or more if the program was suspended meanwhile.
    std::chrono::nanoseconds notBegunAt{};
    std::chrono::nanoseconds notEndedAt{};

    [[nodiscard]] bool succeeded() const { return code == CurlCode::ok; }
};

struct ConversationEvents {
    // curl begins the block of this index. False ends the conversation here; a pause lasts until the call returns.
    std::function<bool(std::size_t block)> begins = {};

    // It has ended; called at once. False ends the conversation here.
    std::function<bool(std::size_t block, BlockOutcome outcome)> ended;

    // Called once an observationInterval.
    std::function<void(const ChildProcess& curl)> look = {};
};

// More output of one block ends the conversation with a failure of the block, since an endless listing would fill the
// memory. A folder of a million items needs far less.
inline constexpr std::size_t maxBlockOutput = std::size_t{128} << 20;

// How long blocks with AtStop::lastsOut may continue after a stop.
inline constexpr std::chrono::milliseconds timeAfterStop{1000};

// Runs curl on the blocks of the plan. `ended` is called once per block, in order, until a call returns false or curl
// ends early. In the latter case the last call reports the failure of the current block, and the outcome of later
// blocks is unknown.
//
// Throws Cancelled when the control is stopped, what curlConfiguration() throws, and the system's errors. An exception
// from a call ends curl and is passed on. A stop during a block with AtStop::lastsOut does not end curl at once; it is
// thrown at the next block that a stop ends.
void converse(
    const Profile& profile, std::string_view password, TransferControl& control, const TransferPlan& plan,
    const ConversationEvents& events);

} // namespace zembrastel
