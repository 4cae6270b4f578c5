// The size of the parts in which a large file is sent.
//
// One run of curl lasts at most ten minutes. A file that may take longer is sent in parts: each part is complete and
// confirmed by the server before the next one is appended.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace zembrastel {

struct UploadLimits {
    std::chrono::seconds run{600};                       // of one transfer: curl's "max-time"
    std::uint64_t largestPart = std::uint64_t{64} << 20; // larger files go in parts
    std::uint64_t firstPart = std::uint64_t{16} << 20;
    std::uint64_t worthContinuing = std::uint64_t{1} << 20; // smaller files are sent again from their beginning
};

// The length of the next part, after a part of this length that took `elapsed`: it should take a quarter of a run, so
// that a slower line does not interrupt it. If `elapsed` is 0, it is the first part.
[[nodiscard]] inline std::uint64_t nextPart(
    const UploadLimits& limits, std::uint64_t part, std::chrono::nanoseconds elapsed) {
    if (elapsed <= elapsed.zero()) return limits.firstPart;
    const std::chrono::duration<double> took = elapsed;
    const std::chrono::duration<double> wanted = limits.run / 4.0;
    const double length = static_cast<double>(part) / took.count() * wanted.count();
    const double most = static_cast<double>(limits.largestPart);
    const double least = static_cast<double>(std::min(limits.worthContinuing, limits.largestPart)) / 4;
    return static_cast<std::uint64_t>(std::clamp(length, least, most));
}

} // namespace zembrastel
