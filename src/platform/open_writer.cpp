#include "platform/open_writer.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>

namespace zembrastel {

bool hasOpenWriter(int file) noexcept {
    // If a writer opens the file during the lease, the kernel sends this process a signal. The default, SIGIO, would
    // end the process; SIGURG is ignored.
    if (::fcntl(file, F_SETSIG, SIGURG) != 0) return false;
    if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN;
    (void)::fcntl(file, F_SETLEASE, F_UNLCK);
    return false;
}

} // namespace zembrastel
