#include "platform/core_dumps.h"

#include <algorithm>
#include <sys/resource.h>

namespace zembrastel {

void forbidCoreDumps() {
    // One byte, not none: the kernel looks at no other limit than this one before it pipes a dump to a handler.
    constexpr rlim_t tooSmallForAny = 1;
    rlimit limits{};
    if (::getrlimit(RLIMIT_CORE, &limits) != 0) return;
    limits.rlim_max = std::min(limits.rlim_max, tooSmallForAny);
    limits.rlim_cur = limits.rlim_max;
    (void)::setrlimit(RLIMIT_CORE, &limits); // lowering is never refused
}

} // namespace zembrastel
