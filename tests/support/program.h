// A child process of a test, with its standard input and output on pipes; what it says on stderr joins the test's own.
//
// Not the ChildProcess of the program under test: a test must not stand on what it examines. Each object belongs to one
// thread. The parent's ends of the pipes are close-on-exec, so that no other child holds them open.
#pragma once

#include "platform/descriptor.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel::testing {

class Program {
public:
    // Starts the executable at command[0], an absolute path. `environment` holds "NAME=value" texts that come before
    // those of this process. Throws std::system_error.
    explicit Program(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Kills the process when it is still there.
    ~Program();

    [[nodiscard]] pid_t pid() const { return processId; }

    // The next line of output without its end. Throws std::runtime_error when the output ends or `limit` passes first.
    [[nodiscard]] std::string readLine(std::chrono::seconds limit);

    // The rest of the output; returns when the process, and all that inherited its output, have closed it. False when
    // `limit` passes first.
    bool readToEnd(std::string& output, std::chrono::seconds limit);

    // Throws std::runtime_error when the program does not read it. SIGPIPE must be ignored for that.
    void writeLine(const std::string& line);

    void closeInput() { input.close(); }

    void kill() const;

    // Stops it until resume(). Returns once it stands still; false when it has ended instead.
    [[nodiscard]] bool suspend() const;
    void resume() const;

    // Waits for its end. The exit status, or 128 and the number of the signal that ended it.
    int wait();

private:
    bool readMore(std::chrono::steady_clock::time_point deadline);

    pid_t processId = -1;
    std::optional<int> status;
    Descriptor input;
    Descriptor output;
    std::string buffer;
    bool ended = false;
};

struct ProgramResult {
    int status;
    std::string output;
};

// Runs a program to its end with empty input. Throws std::runtime_error when that takes more than a minute.
[[nodiscard]] ProgramResult runProgram(
    const std::vector<std::string>& command, const std::vector<std::string>& environment = {});

} // namespace zembrastel::testing
