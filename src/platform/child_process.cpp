#include "platform/child_process.h"

#include "platform/files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace zembrastel {
namespace {

constexpr int firstHandedOver = STDERR_FILENO + 1;

// Background work yields to the window. With a hundred children on two processors, work for the window waited up to
// 0.2 s at equal priority, and 0.02 to 0.06 s at this one. A still lower priority could run transfers into their time
// limits on a busy machine.
constexpr int leastNiceness = 5;

struct Pipe {
    explicit Pipe(const std::string& executable) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throwFileError("pipe", executable);
        reading = Descriptor(ends[0]);
        writing = Descriptor(ends[1]);
    }

    Descriptor reading;
    Descriptor writing;
};

// From here on the kernel kills the process when the last writing end of the pipe is closed. If this program is killed,
// the kernel closes that end. The process must hold the reading end. PR_SET_PDEATHSIG would do the same, but only code
// between fork and exec can set it.
void killAtHangUp(int readingEnd, pid_t process) {
    (void)::fcntl(readingEnd, F_SETSIG, SIGKILL);
    (void)::fcntl(readingEnd, F_SETOWN, process);
    (void)::fcntl(readingEnd, F_SETFL, O_ASYNC);
}

void giveWay(pid_t process) {
    const int own = ::getpriority(PRIO_PROCESS, 0);
    (void)::setpriority(PRIO_PROCESS, static_cast<id_t>(process), std::max(own, leastNiceness));
}

// The descriptors that the child gets, as its numbers 0, 1, 2 ... in this order.
class GivenDescriptors {
public:
    explicit GivenDescriptors(const std::vector<int>& given) {
        posix_spawn_file_actions_init(&actions);
        const int count = static_cast<int>(given.size());
        for (int number = 0; number < count; ++number) {
            int from = given[static_cast<std::size_t>(number)];
            // A descriptor whose number the child uses would be overwritten before it is passed on. If a standard
            // stream is closed, any descriptor can have such a number.
            if (from >= 0 && from < count) {
                const auto& copy = copies.emplace_back(::fcntl(from, F_DUPFD_CLOEXEC, count));
                if (copy) from = copy.get();
            }
            posix_spawn_file_actions_adddup2(&actions, from, number);
        }
        posix_spawn_file_actions_addclosefrom_np(&actions, count);
    }
    GivenDescriptors(const GivenDescriptors&) = delete;
    GivenDescriptors& operator=(const GivenDescriptors&) = delete;
    ~GivenDescriptors() { posix_spawn_file_actions_destroy(&actions); }
    posix_spawn_file_actions_t actions{};

private:
    std::vector<Descriptor> copies;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

class SpawnAttributes {
public:
    SpawnAttributes() {
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        sigset_t all;
        sigfillset(&all);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(
            &attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes); }
    posix_spawnattr_t attributes{};
};

// Blocks SIGPIPE for this thread while it writes, whatever the process does with that signal.
class PipeSignalBlocked {
public:
    PipeSignalBlocked() {
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipeSignal, &before);
    }
    PipeSignalBlocked(const PipeSignalBlocked&) = delete;
    PipeSignalBlocked& operator=(const PipeSignalBlocked&) = delete;
    ~PipeSignalBlocked() {
        const timespec atOnce{};
        if (!wasPending) {
            while (sigtimedwait(&pipeSignal, nullptr, &atOnce) < 0 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

private:
    sigset_t pipeSignal{};
    sigset_t before{};
    bool wasPending = false;
};

// The kernel's description of a descriptor under /proc begins with "pos:" and a number.
std::optional<std::uint64_t> readPosition(const std::filesystem::path& information) {
    constexpr std::size_t enough = 64;
    std::array<char, enough> text{};
    const Descriptor file(::open(information.c_str(), O_RDONLY | O_CLOEXEC));
    const ssize_t size = file ? ::read(file.get(), text.data(), text.size()) : -1;
    if (size <= 0) return std::nullopt;
    const auto* const end = text.data() + size;
    std::uint64_t position = 0;
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    return std::from_chars(std::find_if(text.data(), text.data() + size, isDigit), end, position).ec == std::errc()
               ? std::optional(position)
               : std::nullopt;
}

} // namespace

ChildProcess::~ChildProcess() {
    if (process < 0) return;
    terminate();
    wait();
    collect();
}

void ChildProcess::start() {
    Pipe configuration(command.executable);
    Pipe lifeline(command.executable);
    std::vector<int> given{configuration.reading.get(), command.output, command.errors};
    given.insert(given.end(), command.files.begin(), command.files.end());
    given.push_back(lifeline.reading.get());
    const GivenDescriptors descriptors(given);
    std::vector<std::string> words{command.executable};
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    const auto arguments = pointersTo(words);
    std::vector<char*> environment;
    if (command.environment) environment = pointersTo(*command.environment);
    const SpawnAttributes how;
    const int failed = ::posix_spawn(
        &process, command.executable.c_str(), &descriptors.actions, &how.attributes, arguments.data(),
        command.environment ? environment.data() : environ);
    if (failed != 0) {
        process = -1;
        throwFileError("posix_spawn", command.executable, failed);
    }
    killAtHangUp(lifeline.reading.get(), process);
    giveWay(process);
    if (command.maxWritten) {
        const rlimit most{.rlim_cur = *command.maxWritten, .rlim_max = *command.maxWritten};
        (void)::prlimit(process, RLIMIT_FSIZE, &most, nullptr); // a child that has ended needs no limit
    }
    input = std::move(configuration.writing);
    life = std::move(lifeline.writing);
}

bool ChildProcess::writeInput(std::string_view bytes) {
    const PipeSignalBlocked quiet;
    while (!bytes.empty()) {
        const ssize_t written = ::write(input.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

void ChildProcess::closeInput() { input.close(); }

void ChildProcess::wait() const {
    siginfo_t ended{};
    while (::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
}

bool ChildProcess::wait(std::chrono::milliseconds atMost) const {
    // The child alone holds the other end of this pipe, so its end is an event here.
    pollfd end{.fd = life.get(), .events = 0, .revents = 0};
    if (::poll(&end, 1, static_cast<int>(atMost.count())) > 0) {
        wait();
        return true;
    }
    siginfo_t ended{};
    return ::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT | WNOHANG) != 0 || ended.si_pid != 0;
}

std::string ChildProcess::filePathOf(std::size_t file) {
    return "/dev/fd/" + std::to_string(static_cast<std::size_t>(firstHandedOver) + file);
}

std::optional<std::uint64_t> ChildProcess::filePosition(std::size_t file) const {
    const std::filesystem::path own = "/proc/" + std::to_string(process);
    const std::string handed = std::to_string(static_cast<std::size_t>(firstHandedOver) + file);
    struct stat given {};
    if (::stat((own / "fd" / handed).c_str(), &given) != 0) return std::nullopt;
    std::error_code ended; // the child may be gone at any step
    for (std::filesystem::directory_iterator each(own / "fd", ended), last; !ended && each != last;
         each.increment(ended)) {
        struct stat opened {};
        const auto number = each->path().filename();
        if (number == handed || ::stat(each->path().c_str(), &opened) != 0) continue;
        if (opened.st_ino != given.st_ino || opened.st_dev != given.st_dev) continue;
        return readPosition(own / "fdinfo" / number);
    }
    return std::nullopt;
}

ChildProcess::Exit ChildProcess::collect() {
    int status = 0;
    pid_t collected = -1;
    do {
        collected = ::waitpid(process, &status, 0);
    } while (collected < 0 && errno == EINTR);
    const bool known = collected == process;
    process = -1;
    input.close();
    life.close();
    // If SIGCHLD is ignored, the exit is unknown: count it as a failure.
    if (!known) return {.exited = false, .code = 0};
    if (WIFEXITED(status)) return {.exited = true, .code = WEXITSTATUS(status)};
    return {.exited = false, .code = WTERMSIG(status)};
}

void ChildProcess::terminate() const noexcept {
    if (process < 0) return;
    ::kill(process, SIGTERM);
    ::kill(process, SIGCONT);
}

} // namespace zembrastel
