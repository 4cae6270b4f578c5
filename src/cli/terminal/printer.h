// Prints lines on a thread of its own, so that a reader who stops reading (a terminal held with Ctrl-S, a full pipe)
// delays only the printing.
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

    // The effects may block in a system call. If givesUp() is true, they do not repeat a call that a signal
    // interrupted.
    struct Effects {
        std::function<void(const Line& line)> print;
        std::function<void(const Live& live)> showLive;
        // Returns the line that says how many lines were not printed.
        std::function<std::string(std::size_t lines)> unprinted;
    };

    // When more than `room` bytes wait, drops further lines until all waiting ones are printed, and then prints how
    // many were dropped. Throws std::system_error if the thread cannot be started.
    Printer(std::size_t room, Effects effects);
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;
    ~Printer() { end(); }

    void print(Line line);
    // Shows the latest of these after the lines before it.
    void showLive(Live live);

    // Returns when everything is printed, however long the reader takes. The caller prints nothing afterwards.
    void finish();

    // Ends the thread. Gives the reader half a second for the waiting lines, then drops them.
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
