// The executable of the command line: prepares the process before any thread or file exists, then runs the command.
#include "cli/command.h"
#include "platform/process_resources.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace {

void prepareProcess() {
    // A closed standard stream is opened on /dev/null, so that no file or pipe of the program gets its number.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() returns the lowest free number, which is the stream's own.
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
    }
    zembrastel::forbidCoreDumps(); // they would hold passwords
    zembrastel::prepareFileLimits();
    std::signal(SIGPIPE, SIG_IGN); // a reader that closes its end must not end the program
    std::signal(SIGCHLD, SIG_DFL); // otherwise the exit codes of children could be lost
}

} // namespace

int main(int argumentCount, char** arguments) {
    prepareProcess();
    zembrastel::cli::Interrupt interrupt;
    return static_cast<int>(zembrastel::cli::runCommandLine(argumentCount, arguments, interrupt));
}
