#include "platform/open_writer.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>

namespace zembrastel {

bool hasOpenWriter(int file) noexcept {
    // A writer that comes while the lease is held has a signal sent to this process. By default that is SIGIO, which
    // would end it; SIGURG is ignored.
    if (::fcntl(file, F_SETSIG, SIGURG) != 0) return false;
    if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN;
    (void)::fcntl(file, F_SETLEASE, F_UNLCK);
    return false;
}

} // namespace zembrastel
