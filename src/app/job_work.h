// What a job does off the main context: with the profile's server, or, in a demonstration, with nobody.
//
// The functions are called on threads of jobs, several at a time. They block, and end soon after their stop was
// requested or their control was cancelled.
#pragma once

#include "app/remote_review.h"
#include "sync/sync_worker.h"
#include "transport/ftp_transport.h"

#include <functional>
#include <stop_token>
#include <vector>

namespace zembrastel {

struct JobWork {
    // Compares the local folder with the server. Throws Cancelled when it was stopped, and else what the user reads.
    std::function<ServerCheck(const FTPTransport& server, const ServerRecord& recorded, const std::stop_token& stop)>
        check;

    // Clears away what a killed run left in the local folder, and keeps the server up to date until it is stopped.
    // Throws nothing.
    std::function<void(const SyncWorker& worker, const std::stop_token& stop)> watch;
};

[[nodiscard]] JobWork serverWork();

// The same, but for a worker that ends after one pass.
[[nodiscard]] JobWork onePass();

} // namespace zembrastel
