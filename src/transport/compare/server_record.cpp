#include "transport/compare/server_record.h"

#include <algorithm>
#include <cmath>

namespace zembrastel {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds precision{1.0};
constexpr std::chrono::seconds zoneStep = std::chrono::minutes(15);
constexpr std::chrono::seconds farthestZones = std::chrono::hours(26); // from UTC-12 to UTC+14

bool equal(RemoteDate a, RemoteDate b) { return std::abs((a - b).count()) <= precision.count(); }

// The difference as a multiple of the zone step; nullopt if it is none.
std::optional<std::chrono::seconds> zoneShift(Seconds difference) {
    if (std::abs(difference.count()) > Seconds(farthestZones + precision).count()) return std::nullopt;
    const auto steps = std::llround(difference / Seconds(zoneStep));
    const std::chrono::seconds shift = steps * zoneStep;
    if (std::abs((difference - Seconds(shift)).count()) > precision.count()) return std::nullopt;
    return shift;
}

} // namespace

std::chrono::seconds commonShift(const std::vector<Seconds>& differences) {
    constexpr std::size_t enough = 3;
    if (differences.size() < enough) return {};
    const auto shift = zoneShift(differences.front());
    const bool isCommon = shift && std::ranges::all_of(differences, [&shift](Seconds difference) {
                              return zoneShift(difference) == shift;
                          });
    return isCommon ? *shift : std::chrono::seconds(0);
}

bool differsFromRecord(const ServerVersion& found, const RecordedFile& recorded, std::chrono::seconds shift) {
    if (recorded.remoteDate != nullptr && !equal(found.modified - shift, *recorded.remoteDate)) return true;
    if (!found.size || (recorded.local == nullptr && recorded.announced == nullptr)) return false;
    const auto hasSize = [&found](const Fingerprint* file) {
        return file != nullptr && *found.size == static_cast<std::uint64_t>(file->size);
    };
    return !hasSize(recorded.local) && !hasSize(recorded.announced);
}

bool isVersion(const ServerVersion& found, RemoteDate modified, std::uint64_t size) {
    return equal(found.modified, modified) && (!found.size || *found.size == size);
}

} // namespace zembrastel
