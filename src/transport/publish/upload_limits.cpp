#include "transport/publish/upload_limits.h"

#include <algorithm>

namespace zembrastel {

std::uint64_t nextPart(const UploadLimits& limits, std::uint64_t part, std::chrono::nanoseconds elapsed) {
    if (elapsed <= elapsed.zero()) return limits.firstPart;
    const std::chrono::duration<double> took = elapsed;
    const std::chrono::duration<double> wanted = limits.run / 4.0;
    const double length = static_cast<double>(part) / took.count() * wanted.count();
    const double most = static_cast<double>(limits.largestPart);
    const double least = static_cast<double>(std::min(limits.worthContinuing, limits.largestPart)) / 4;
    return static_cast<std::uint64_t>(std::clamp(length, least, most));
}

} // namespace zembrastel
