#include "support/program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace zembrastel::testing {

namespace {

struct Pipe {
    Descriptor reading;
    Descriptor writing;

    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
        reading = Descriptor(ends[0]);
        writing = Descriptor(ends[1]);
    }
};

// The arguments of posix_spawn other than the command: pipes in place, no signal blocked, and nothing else open, since
// another thread may have a file open for writing that must not stay so for as long as the program runs.
class SpawnSetup {
public:
    SpawnSetup(int standardInput, int standardOutput) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, standardInput, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, standardOutput, STDOUT_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;
    ~SpawnSetup() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
    result.push_back(nullptr);
    return result;
}

// The command, run by env where it has variables of its own.
std::vector<std::string> withVariables(std::vector<std::string> command, const std::vector<std::string>& variables) {
    if (variables.empty()) return command;
    command.insert(command.begin(), variables.begin(), variables.end());
    command.insert(command.begin(), "/usr/bin/env");
    return command;
}

} // namespace

Program::Program(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
    Pipe toProgram;
    Pipe fromProgram;
    const SpawnSetup setup(toProgram.reading.get(), fromProgram.writing.get());
    const auto all = withVariables(command, environment);
    const int error =
        posix_spawn(&processId, all.front().c_str(), &setup.actions, &setup.attributes, pointers(all).data(), environ);
    if (error != 0) throw std::system_error(error, std::generic_category(), command.front());
    input = std::move(toProgram.writing);
    output = std::move(fromProgram.reading);
}

Program::~Program() {
    if (status) return;
    kill();
    wait();
}

bool Program::readMore(std::chrono::steady_clock::time_point deadline) {
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waiting{.fd = output.get(), .events = POLLIN, .revents = 0};
    const int ready = poll(&waiting, 1, left > milliseconds(0) ? static_cast<int>(left.count()) : 0);
    if (ready < 0 && errno == EINTR) return true;
    if (ready <= 0) return false;
    std::array<char, 4096> chunk{};
    const ssize_t size = read(output.get(), chunk.data(), chunk.size());
    if (size > 0) buffer.append(chunk.data(), static_cast<std::size_t>(size));
    ended = size == 0;
    return true;
}

std::string Program::readLine(std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::size_t end = std::string::npos;
    while ((end = buffer.find('\n')) == std::string::npos) {
        if (ended) throw std::runtime_error("the program ended before it said what was expected");
        if (!readMore(deadline)) throw std::runtime_error("the program did not say what was expected in time");
    }
    std::string line = buffer.substr(0, end);
    buffer.erase(0, end + 1);
    return line;
}

void Program::writeLine(const std::string& line) {
    const std::string bytes = line + "\n";
    if (write(input.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the program does not read its input");
}

bool Program::readToEnd(std::string& text, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!ended) {
        if (!readMore(deadline)) return false;
    }
    text = std::exchange(buffer, {});
    return true;
}

void Program::kill() const {
    if (!status) ::kill(processId, SIGKILL);
}

bool Program::suspend() const {
    if (status) return false;
    ::kill(processId, SIGSTOP);
    siginfo_t seen{};
    while (waitid(P_PID, static_cast<id_t>(processId), &seen, WSTOPPED | WEXITED | WNOWAIT) != 0) {
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitid");
    }
    return seen.si_code == CLD_STOPPED;
}

void Program::resume() const {
    if (!status) ::kill(processId, SIGCONT);
}

int Program::wait() {
    if (!status) {
        int raw = 0;
        while (waitpid(processId, &raw, 0) < 0) {
            if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
        }
        status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    }
    return *status;
}

ProgramResult runProgram(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
    Program program(command, environment);
    program.closeInput();
    ProgramResult result{};
    if (!program.readToEnd(result.output, std::chrono::minutes(1)))
        throw std::runtime_error(command.front() + " did not end in time");
    result.status = program.wait();
    return result;
}

} // namespace zembrastel::testing
