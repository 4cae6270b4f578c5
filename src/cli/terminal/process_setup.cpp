#include "cli/terminal/process_setup.h"

#include "platform/process_limits.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace zembrastel::cli {

void prepareProcess() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is the stream's own.
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
    }
    forbidCoreDumps();
    prepareFileLimits();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
}

} // namespace zembrastel::cli
