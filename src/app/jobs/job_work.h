// What a job does off the main context: with the profile's server, or, in a demonstration, without one.
//
// The functions are called on threads of jobs, several at a time. They block, and end soon after their stop was
// requested or their control was cancelled.
#pragma once

#include "app/jobs/job.h"
#include "platform/wake_signals.h"
#include "sync/progress_meter.h"
#include "sync/sync_worker.h"
#include "transport/ftp_transport.h"

#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace zembrastel {

struct JobWork {
    // Compares the local folder with the server. Throws Cancelled if it was stopped, or else what the user reads.
    std::function<ServerCheck(const FTPTransport& server, const ServerRecord& recorded, const std::stop_token& stop)>
        check;

    // Clears away what a killed run left in the local folder, and keeps the server up to date until it is stopped.
    // Throws nothing.
    std::function<void(const SyncWorker& worker, const std::stop_token& stop)> watch;

    // Compares the contents of these files with those on the server. Throws as `check` does.
    std::function<void(
        const FTPTransport& server, const std::vector<FTPTransport::FileToCompare>& files,
        const FTPTransport::Compared& compared)>
        compareContents = {};

    // False if this machine has no network through which it could reach the host.
    std::function<bool(const std::string& host)> hasNetwork = hasNetworkFor;
};

// The server of a job's profile. The meter must outlive it.
[[nodiscard]] FTPTransport transportFor(
    const Assignment& work, ProgressMeter& meter, const std::vector<PrivateItem>& privateItems = {});

[[nodiscard]] JobWork serverWork();

// The same, but for a worker that ends after one pass.
[[nodiscard]] JobWork onePass();

} // namespace zembrastel
