#include "platform/process_resources.h"

#include <algorithm>
#include <csignal>
#include <malloc.h>
#include <sys/resource.h>

namespace zembrastel {

void prepareFileLimits() {
    std::signal(SIGXFSZ, SIG_IGN);
    constexpr rlim_t enough = 65536;
    rlimit limits{};
    if (::getrlimit(RLIMIT_NOFILE, &limits) != 0) return;
    const rlim_t wanted = std::min(enough, limits.rlim_max);
    if (limits.rlim_cur >= wanted) return;
    limits.rlim_cur = wanted;
    (void)::setrlimit(RLIMIT_NOFILE, &limits); // if it fails, fewer files are staged at a time
}

void forbidCoreDumps() {
    // One byte, not zero: before the kernel pipes a dump to a handler, it checks for a limit of exactly one.
    constexpr rlim_t tooSmallForAny = 1;
    rlimit limits{};
    if (::getrlimit(RLIMIT_CORE, &limits) != 0) return;
    limits.rlim_max = std::min(limits.rlim_max, tooSmallForAny);
    limits.rlim_cur = limits.rlim_max;
    (void)::setrlimit(RLIMIT_CORE, &limits); // lowering is never refused
}

void returnFreeMemory() { (void)::malloc_trim(0); }

} // namespace zembrastel
