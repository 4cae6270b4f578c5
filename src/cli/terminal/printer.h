// Prints lines on a thread of its own, so that a reader who stops reading (a terminal held with Ctrl-S, a full pipe)
// holds up nothing but the printing.
//
// Identity. print() and showLive() may be called on any thread and return at once. The effects are called on the
// printer's thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace zembrastel::cli {

class Printer {
public:
    struct Line {
        int stream = 0; // its descriptor
        std::string text{};
    };
    // The two parts of a live line: see LiveLine.
    struct Live {
        std::string subject;
        std::string text;
    };

    // They may block in a system call. When givesUp() is true, a call that a signal interrupted is not repeated.
    struct Effects {
        std::function<void(const Line& line)> print;
        std::function<void(const Live& live)> showLive;
        // The line that says how many lines were not printed.
        std::function<std::string(std::size_t lines)> unprinted;
    };

    // Once so many bytes wait, further lines are dropped until all that waits is printed; then the reader is told how
    // many they were. A thread that cannot be started throws std::system_error.
    Printer(std::size_t room, Effects effects);
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;
    ~Printer() { end(); }

    void print(Line line);
    // The latest is shown when all lines before it are printed.
    void showLive(Live live);

    // Returns when everything is printed, however long the reader takes. Nothing more may be printed then.
    void finish();

    // Ends the thread. Gives the reader half a second for what still waits, then drops it.
    void end();

    [[nodiscard]] bool givesUp() const { return givingUp; }

private:
    void run();
    [[nodiscard]] std::optional<Line> next();

    const std::size_t room;
    const Effects effects;
    std::mutex mutex; // guards what follows
    std::condition_variable changed;
    std::deque<Line> lines;
    std::size_t bytes = 0;
    std::optional<Live> live;
    std::size_t unprinted = 0;
    int unprintedStream = 0; // of the latest of those
    bool ending = false;
    bool ended = false;
    std::atomic<bool> givingUp = false;
    std::thread thread; // last: it uses all of the above
};

} // namespace zembrastel::cli
