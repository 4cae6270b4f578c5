// One child process: started without a shell, fed through a pipe, waited for by its own id.
//
// Owned by the thread that runs it. Only terminate() may be called by another thread, and only between start() and
// collect(): until collect() the kernel reserves the process id, so the signal cannot reach another process.
//
// The child gets the standard streams, the files that are passed to it, a pipe end by which the kernel kills it when
// this program is killed, and no other descriptor. It has default signal handling, a process group of its own (so
// Ctrl-C in a terminal reaches only this program) and a lower priority.
#pragma once

#include "platform/descriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace zembrastel {

class ChildProcess {
public:
    struct Command {
        std::string executable; // absolute path
        std::vector<std::string> arguments = {};
        int output = -1;             // the child's standard output, borrowed until start() returns
        int errors = -1;             // its standard error, likewise
        std::vector<int> files = {}; // files that the child finds at filePathOf(0), filePathOf(1) ..., likewise

        // The child's whole environment, as "NAME=value". nullopt: this program's own environment.
        std::optional<std::vector<std::string>> environment = std::nullopt;

        // The longest file that the child may write, in bytes; beyond that SIGXFSZ ends it. Set after the start, but
        // before the child has read its input.
        std::optional<std::uint64_t> maxWritten = std::nullopt;
    };

    // Paths by which the child opens the passed files, even if their names change. `filePath` is the first.
    static constexpr const char* filePath = "/dev/fd/3";
    [[nodiscard]] static std::string filePathOf(std::size_t file);

    struct Exit {
        bool exited = false; // false when a signal ended it
        int code = 0;        // exit status, or the signal's number
    };

    explicit ChildProcess(Command what) : command(std::move(what)) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    // Ends and collects a child that still runs.
    ~ChildProcess();

    // Throws std::filesystem::filesystem_error, naming the executable.
    void start();

    // Writes to the child's standard input, blocking while the pipe is full. False when the child no longer reads.
    [[nodiscard]] bool writeInput(std::string_view bytes);
    void closeInput();

    // Blocks until the child has ended. collect() then returns its exit.
    void wait() const;

    // The same, for at most `atMost`. False if the child still runs.
    [[nodiscard]] bool wait(std::chrono::milliseconds atMost) const;

    // The child's position in a passed file, in bytes, if the child opened filePathOf(file) itself. nullopt while it
    // has not, and if the system does not report it. Between start() and collect().
    [[nodiscard]] std::optional<std::uint64_t> filePosition(std::size_t file = 0) const;

    // The exit of a child, after wait(). The process id is free afterwards.
    Exit collect();

    // Sends SIGTERM, and SIGCONT so that a stopped child can end. Does not wait.
    void terminate() const noexcept;

private:
    Command command;
    Descriptor input;
    Descriptor life; // the kernel closes it when the program ends in any way
    pid_t process = -1;
};

} // namespace zembrastel
