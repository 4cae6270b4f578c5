// Turns the observations of a transport into progress reports, few enough to be shown.
//
// Used on the thread of the work. Work that ends within a second is not reported. After that there is at most one
// report per observationInterval, and one at the end of a file that was reported. Each report has the latest counts.
#pragma once

#include "platform/clock.h"
#include "sync/transfer_progress.h"
#include "transport/transfer_observer.h"

#include <chrono>
#include <functional>
#include <string>

namespace zembrastel {

class ProgressMeter final : public TransferObserver {
public:
    using Report = std::function<void(const TransferProgress&)>;

    // How long a transfer or a walk takes before its first report.
    static constexpr std::chrono::seconds firstShown{1};

    ProgressMeter(Clock& usedClock, Report reportTo) : clock(usedClock), report(std::move(reportTo)) {}
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    // Other work begins; all counts start at zero, except `filesQueued`.
    void begin(TransferProgress::Work work, std::uint64_t filesQueued = 0);

    // For work whose files the transport does not count: `done` of `queued` files are done.
    void setFiles(std::uint64_t done, std::uint64_t queued);

    // The number of bytes that are still to be transferred.
    void expectBytes(std::uint64_t toCome) { now.bytesQueued = now.bytes + toCome; }

    void folderListed(std::uint64_t files) override;
    void fileDone() override;
    void fileBegins(const std::string& path, std::optional<std::uint64_t> size) override;
    void fileMoved(std::uint64_t bytes) override;

private:
    using Time = std::chrono::steady_clock::time_point;

    void reportCounts();
    void reportNow(Time time);

    Clock& clock;
    const Report report;
    TransferProgress now;
    Time begun{};
    std::optional<Time> lastReported;
    // The file in transfer.
    std::string path;
    std::optional<std::uint64_t> size;
    Time fileBegun{};
    TransferRate rate;
    std::uint64_t bytesBefore = 0; // of all files before it
    TransferRate rateOfAll;
};

} // namespace zembrastel
