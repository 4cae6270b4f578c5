// One child process: started without a shell, fed through a pipe, waited for by its own id.
//
// Identity; owned by the thread that runs it. Only terminate() may come from another thread, and only between start()
// and collect(): until collect() the kernel keeps the id reserved, so a request to end can never hit a stranger.
//
// The child gets the three standard streams, the files that are handed over to it, the end of a pipe by which it is
// killed should this program be killed, and no other descriptor; default signal handling; a process group of its
// own, so that Ctrl-C in a terminal reaches it only through this program; and less of a busy processor than others.
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
        int output = -1;             // borrowed until start() returned: the child's standard output
        int errors = -1;             // likewise its standard error
        std::vector<int> files = {}; // likewise files that the child finds at filePathOf(0), filePathOf(1) ...

        // "NAME=value", all that the child gets. Nothing: this program's own environment.
        std::optional<std::vector<std::string>> environment = std::nullopt;

        // No file that the child writes may become longer than this: SIGXFSZ ends it. In force before the child has
        // read its input, not from its first moment.
        std::optional<std::uint64_t> mostWritten = std::nullopt;
    };

    // Name files that were handed over and no others, whatever happens to the names they had. `filePath` is the first.
    static constexpr const char* filePath = "/dev/fd/3";
    [[nodiscard]] static std::string filePathOf(std::size_t file);

    struct Exit {
        bool exited = false; // false when a signal ended it
        int code = 0;        // exit status, or the signal's number
    };

    explicit ChildProcess(Command what) : command(std::move(what)) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    // Ends and collects a child that is still there.
    ~ChildProcess();

    // Throws std::filesystem::filesystem_error, naming the executable.
    void start();

    // Writes to the child's standard input, blocking while the pipe is full. False when the child no longer reads.
    [[nodiscard]] bool writeInput(std::string_view bytes);
    void closeInput();

    // Blocks until the child has ended, and leaves its exit to collect().
    void wait() const;

    // The same, for no longer than `atMost`, or a little less. False when the child still runs.
    [[nodiscard]] bool wait(std::chrono::milliseconds atMost) const;

    // How far the child has come in a file that was handed over to it, reading or writing by a descriptor that it
    // opened at filePathOf(file) itself. Nothing while it has none, and where the system does not say. Between start()
    // and collect().
    [[nodiscard]] std::optional<std::uint64_t> filePosition(std::size_t file = 0) const;

    // The exit of a child that wait() has seen end. From here on the child is gone.
    Exit collect();

    // Asks the child to end (SIGTERM; a stopped child is let go on so that it can). Does not wait.
    void terminate() const noexcept;

private:
    Command command;
    Descriptor input;
    Descriptor life; // closed by the kernel with the program, however that ends
    pid_t process = -1;
};

} // namespace zembrastel
