// The real program at its real work, to be stopped, suspended and killed by a test.
//
// One thread at a time.
#pragma once

#include "../cli/cli_run.h"
#include "support/ftp_server.h"
#include "support/process_figures.h"
#include "support/wait_for.h"
#include "torture/torture.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace zembrastel::testing {

// The program at work; its output is read as it comes.
class ProgramRun {
public:
    using Time = std::chrono::system_clock::time_point;
    static constexpr std::chrono::seconds limit{60}; // for what must happen in the end

    ProgramRun(const CliPlace& place, const Texts& arguments) : program(place.start(arguments)) {
        program.closeInput();
        reader = std::jthread([this] { read(); });
    }
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;
    ~ProgramRun() { program.kill(); } // or the reader would go on after a failure

    // Waits until so many lines contain the marker, or one contains one of the words, or the program has ended: then
    // false.
    bool waitForLines(std::size_t count, const std::string& marker, const std::vector<std::string>& words) {
        std::unique_lock lock(mutex);
        const auto marked = [&](const std::string& line) { return line.find(marker) != std::string::npos; };
        const auto enough = [&] {
            return ended || std::cmp_greater_equal(std::ranges::count_if(lines, marked), count) || contains(words);
        };
        if (!more.wait_for(lock, limit, enough)) throw std::runtime_error("the program does not go on");
        return !ended;
    }

    bool hasPrinted(const std::string& words) {
        const std::scoped_lock lock(mutex);
        return contains({words});
    }

    // The newest line with these words, and when it came; nothing if there is none.
    [[nodiscard]] std::optional<std::pair<Time, std::string>> newest(const std::string& words) {
        const std::scoped_lock lock(mutex);
        for (std::size_t at = lines.size(); at-- > 0;) {
            if (lines[at].find(words) != std::string::npos) return std::pair(times[at], lines[at]);
        }
        return std::nullopt;
    }

    [[nodiscard]] pid_t pid() const { return program.pid(); }

    void suspendFor(std::chrono::milliseconds time) const {
        if (program.suspend()) std::this_thread::sleep_for(time);
        program.resume();
    }

    // Stops it first, so that its children are known and do not change. Nothing when it has ended by itself.
    std::optional<std::vector<pid_t>> kill(bool childrenToo) {
        if (!program.suspend()) return std::nullopt;
        const auto children = childrenOf(program.pid());
        if (childrenToo) {
            for (const pid_t child : children) ::kill(child, SIGKILL);
        }
        program.kill();
        return children;
    }

    // Its exit status; all its lines are there then.
    int wait() {
        reader.join();
        return program.wait();
    }

    int stop() {
        ::kill(program.pid(), SIGTERM);
        return wait();
    }

    [[nodiscard]] std::vector<std::string> output() {
        const std::scoped_lock lock(mutex);
        return lines;
    }

private:
    void read() {
        try {
            while (true) {
                std::string text = program.readLine(limit * 10);
                const std::scoped_lock lock(mutex);
                lines.push_back(std::move(text));
                times.push_back(std::chrono::system_clock::now());
                more.notify_all();
            }
        } catch (const std::runtime_error&) {
            const std::scoped_lock lock(mutex);
            ended = true;
            more.notify_all();
        }
    }

    [[nodiscard]] bool contains(const std::vector<std::string>& words) const {
        return std::ranges::any_of(lines, [&](const std::string& line) {
            return std::ranges::any_of(
                words, [&](const std::string& word) { return line.find(word) != std::string::npos; });
        });
    }

    std::mutex mutex;
    std::condition_variable more;
    std::vector<std::string> lines;
    std::vector<Time> times; // of the lines
    bool ended = false;
    Program program;
    std::jthread reader;
};

// A transfer does not outlive the program by more than a moment, nor its sessions with the server, which may still be
// about to do the last thing that they were asked for. `children` are those of the killed program.
inline void requireTransfersEnded(const std::vector<pid_t>& children, const FtpServer& server) {
    for (const pid_t child : children) {
        const auto gone = [child] { return !std::filesystem::exists(processFolder(child)); };
        require(eventually(gone), "a transfer goes on without the program");
    }
    const auto idle = [&server] {
        try {
            return std::ranges::all_of(
                childrenOf(*server.launcher()), [](pid_t listener) { return childrenOf(listener).empty(); });
        } catch (const std::filesystem::filesystem_error&) { // one ends while its children are read
            return false;
        }
    };
    require(eventually(idle, ProgramRun::limit), "a session goes on without its transfer");
}

} // namespace zembrastel::testing
