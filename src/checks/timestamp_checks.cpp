#include "checks/check.h"
#include "transport/compare/remote_change.h"

namespace zembrastel {
namespace {

void precision() {
    using Seconds = std::chrono::duration<double>;
    const RemoteDate noon(Seconds(800000000));
    const Fingerprint local{.size = 1, .modified = sinceUnixEpoch(noon).count(), .inode = 1};
    const auto offered = [&](double later, std::optional<double> known) {
        return shouldOffer(noon + Seconds(later), local, known ? std::optional(noon + Seconds(*known)) : std::nullopt);
    };
    require(!offered(0, {}) && !offered(1, {}), "a server file at most a second newer than the local one is offered");
    require(offered(1.1, {}), "a server file more than a second newer than the local one is not offered");
    require(!offered(60, 60) && !offered(61, 60), "a server file at most a second past its known date is offered");
    require(offered(61.5, 60), "a server file more than a second past its known date is not offered");
    require(!offered(0.5, -60), "a server file is offered by its known date alone");
}

} // namespace

Checks timestampChecks() { return {{"allow FTP timestamp precision tolerance", precision}}; }

} // namespace zembrastel
