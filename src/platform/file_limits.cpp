#include "platform/file_limits.h"

#include <algorithm>
#include <csignal>
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
    (void)::setrlimit(RLIMIT_NOFILE, &limits); // where it stays as it was, fewer files are staged at a time
}

} // namespace zembrastel
