#include "sync/progress_meter.h"

namespace zembrastel {
namespace {

// Of several files: between two batches of them nothing is sent for a moment.
constexpr std::chrono::seconds memoryForAll{15};

} // namespace

void ProgressMeter::begin(TransferProgress::Work work, std::uint64_t filesQueued) {
    now = {.work = work, .filesQueued = filesQueued};
    begun = clock.steadyNow();
    lastTold.reset();
    bytesBefore = 0;
    rateOfAll = TransferRate(memoryForAll);
    rateOfAll.add(begun, 0);
}

void ProgressMeter::setFiles(std::uint64_t done, std::uint64_t queued) {
    now.filesDone = done;
    now.filesQueued = queued;
    if (queued > 1) tellCounts();
}

void ProgressMeter::folderListed(std::uint64_t files) {
    ++now.folders;
    now.filesQueued += files;
    tellCounts();
}

void ProgressMeter::fileDone() {
    ++now.filesDone;
    now.file.reset();
    tellCounts();
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
    // A size that was passed was no size of this file.
    if (size && bytes > *size) size.reset();
    now.file = {
        .path = path,
        .bytes = bytes,
        .size = size,
        .rate = rate.perSecond(),
        .left = size ? rate.left(*size - bytes) : std::nullopt};
    tell(time);
}

void ProgressMeter::tellCounts() {
    const Time time = clock.steadyNow();
    if (time - begun < firstShown) return;
    if (lastTold && time - *lastTold < observationInterval) return;
    tell(time);
}

void ProgressMeter::tell(Time time) {
    lastTold = time;
    if (report) report(now);
}

} // namespace zembrastel
