#include "sync/progress_meter.h"

namespace zembrastel {
namespace {

// For several files: between two batches nothing is sent for a moment.
constexpr std::chrono::seconds memoryForAll{15};

} // namespace

void ProgressMeter::begin(TransferProgress::Work work, std::uint64_t filesQueued) {
    now = {.work = work, .filesQueued = filesQueued};
    begun = clock.steadyNow();
    lastReported.reset();
    bytesBefore = 0;
    rateOfAll = TransferRate(memoryForAll);
    rateOfAll.add(begun, 0);
}

void ProgressMeter::setFiles(std::uint64_t done, std::uint64_t queued) {
    now.filesDone = done;
    now.filesQueued = queued;
    if (queued > 1) reportCounts();
}

void ProgressMeter::folderListed(std::uint64_t files) {
    ++now.folders;
    now.filesQueued += files;
    reportCounts();
}

void ProgressMeter::fileDone() {
    ++now.filesDone;
    now.file.reset();
    reportCounts();
}

void ProgressMeter::fileBegins(const std::string& filePath, std::optional<std::uint64_t> fileSize) {
    now.file.reset();
    path = filePath;
    size = fileSize;
    rate = TransferRate();
    bytesBefore = now.bytes;
    fileBegun = clock.steadyNow();
}

void ProgressMeter::fileMoved(std::uint64_t bytes) {
    const Time time = clock.steadyNow();
    rate.add(time, bytes);
    now.bytes = bytesBefore + bytes;
    rateOfAll.add(time, now.bytes);
    now.rate = rateOfAll.perSecond();
    if (time - fileBegun < firstShown) return;
    // The reported size was too small.
    if (size && bytes > *size) size.reset();
    now.file = {
        .path = path,
        .bytes = bytes,
        .size = size,
        .rate = rate.perSecond(),
        .left = size ? rate.left(*size - bytes) : std::nullopt};
    reportNow(time);
}

void ProgressMeter::reportCounts() {
    const Time time = clock.steadyNow();
    if (time - begun < firstShown) return;
    if (lastReported && time - *lastReported < observationInterval) return;
    reportNow(time);
}

void ProgressMeter::reportNow(Time time) {
    lastReported = time;
    if (report) report(now);
}

} // namespace zembrastel
