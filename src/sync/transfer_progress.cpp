#include "sync/transfer_progress.h"

#include <cmath>

namespace zembrastel {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds watchedLongEnough{3};
constexpr std::chrono::hours longestShown{24};

} // namespace

void TransferRate::add(Time time, std::uint64_t bytes) {
    const Seconds passed = time - last;
    if (first && passed.count() > 0) {
        // A transfer that begins again counts as no progress, not as negative progress.
        const double rate = static_cast<double>(bytes > seen ? bytes - seen : 0) / passed.count();
        const double weight = average ? 1 - std::exp(-passed / memory) : 1;
        average = average.value_or(0) + weight * (rate - average.value_or(0));
    }
    if (!first) first = time;
    last = time;
    seen = bytes;
}

std::optional<std::chrono::seconds> TransferRate::left(std::uint64_t bytesToCome) const {
    if (!average || *average < 1 || last - *first < watchedLongEnough) return std::nullopt;
    const Seconds time(static_cast<double>(bytesToCome) / *average);
    return time <= longestShown ? std::optional(std::chrono::ceil<std::chrono::seconds>(time)) : std::nullopt;
}

} // namespace zembrastel
