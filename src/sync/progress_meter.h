// Makes what a transport tells of its work into reports of progress, few enough to be shown.
//
// Identity; used on the thread of the work. Nothing is reported of work that is over within a second. After that at
// most one report comes in an observationInterval, and one at the end of a file that was reported; what a report leaves
// out is in the next one.
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

    // The first report of a file comes when it has been in transfer for so long, of a walk when it has taken so long.
    static constexpr std::chrono::seconds firstShown{1};

    ProgressMeter(Clock& usedClock, Report reportTo) : clock(usedClock), report(std::move(reportTo)) {}
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    // Something else begins, with all counts at these.
    void begin(TransferProgress::Work work, std::uint64_t filesQueued = 0);

    // Where the files are not counted by what the transport tells: so many of so many are done.
    void setFiles(std::uint64_t done, std::uint64_t queued);

    // So many bytes are still to be moved.
    void expectBytes(std::uint64_t toCome) { now.bytesQueued = now.bytes + toCome; }

    void folderListed(std::uint64_t files) override;
    void fileDone() override;
    void fileBegins(const std::string& path, std::optional<std::uint64_t> size) override;
    void fileMoved(std::uint64_t bytes) override;

private:
    using Time = std::chrono::steady_clock::time_point;

    void tellCounts();
    void tell(Time time);

    Clock& clock;
    const Report report;
    TransferProgress now;
    Time begun{};
    std::optional<Time> lastTold;
    // Of the file in transfer.
    std::string path;
    std::optional<std::uint64_t> size;
    Time fileBegun{};
    TransferRate rate;
    std::uint64_t bytesBefore = 0; // of all files before it
    TransferRate rateOfAll;
};

} // namespace zembrastel
