// How much of a large file is sent in one piece.
//
// One run of curl lasts ten minutes at most. A file that may need more is sent in parts, of which each ends well and is
// confirmed by the server before the next is appended to it.
#pragma once

#include <chrono>
#include <cstdint>

namespace zembrastel {

struct UploadLimits {
    std::chrono::seconds run{600};                       // of one transfer: curl's "max-time"
    std::uint64_t largestPart = std::uint64_t{64} << 20; // larger files go in parts
    std::uint64_t firstPart = std::uint64_t{16} << 20;
    std::uint64_t worthContinuing = std::uint64_t{1} << 20; // smaller files are sent again from their beginning
};

// How long the part after one of this length should be, which took so long: a quarter of a run, so that a line that
// becomes slower does not cut it off. 0 elapsed: the part is the first one.
[[nodiscard]] std::uint64_t nextPart(const UploadLimits& limits, std::uint64_t part, std::chrono::nanoseconds elapsed);

} // namespace zembrastel
