// The two standard streams, as plain lines or as JSON lines.
//
// Main thread. Every line is written at once and as a whole, so that a pipe has it while the program goes on. Output
// waits for a slow reader, except while a NeverWaiting lives. A line that cannot be written is dropped and the failure
// remembered: syncing goes on without a reader.
#pragma once

#include "cli/terminal/json_line.h"
#include "cli/terminal/live_line.h"
#include "cli/terminal/printer.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace zembrastel::cli {

// Colours support the words and never replace them.
enum class Tone { good, attention, bad };

// The text in the tone's colour if the descriptor is a terminal with colours and NO_COLOR is not set to a value; else
// the plain text.
[[nodiscard]] std::string inColour(std::string_view text, Tone tone, int descriptor);

class Output {
public:
    explicit Output(bool asJson) : jsonLines(asJson), liveLine(!asJson) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // For a program that publishes: while it lives, a thread writes the lines, and no call waits for a reader.
    class NeverWaiting {
    public:
        // The most bytes of lines that wait for a reader. Further lines are dropped, and a line says how many.
        static constexpr std::size_t usualRoom = std::size_t{256} << 10U;
        // Drops no line.
        static constexpr std::size_t unlimitedRoom = std::numeric_limits<std::size_t>::max();

        // At its end it asks `waitsAtEnd`: if true, it waits until the reader has taken the rest, else half a second.
        NeverWaiting(
            Output& usedOutput, std::size_t room, std::function<bool()> waitsAtEnd = [] { return false; });
        NeverWaiting(const NeverWaiting&) = delete;
        NeverWaiting& operator=(const NeverWaiting&) = delete;
        ~NeverWaiting();

    private:
        Output& output;
        const std::function<bool()> waits;
    };

    [[nodiscard]] bool json() const { return jsonLines; }

    // A result, on standard output. The caller chooses the form by json().
    void line(std::string_view text);
    void line(JsonLine& object) { line(object.finished()); }
    void line(JsonLine&& object) { line(object.finished()); }

    // On standard error, on one line: a failure, a warning, and a hint for the user (not printed with --json).
    void error(std::string_view message);
    void warning(std::string_view message);
    void note(std::string_view message);

    // Shows the current work on a line that the next call overwrites and that stays below every other line; see
    // LiveLine. Two empty texts end it. Does nothing without a terminal: see isLive().
    void live(std::string_view subject, std::string_view text);
    [[nodiscard]] bool isLive() const { return liveLine.possible(); }

    // Why results were lost, if they were. A reader that closed the pipe is no failure. Do not call this or
    // readerClosed() while a NeverWaiting lives.
    [[nodiscard]] const std::error_code& failure() const { return lost; }

    // Whether the reader has closed the pipe. Then a command that only reports can end.
    [[nodiscard]] bool readerClosed() const { return pipeBroken; }

private:
    void report(const char* event, std::string_view prefix, std::string_view message);
    void write(int descriptor, std::string_view text);
    void writeNow(int descriptor, std::string_view text);
    [[nodiscard]] std::string unprintedLine(std::size_t lines) const;

    bool jsonLines;
    LiveLine liveLine;
    std::error_code lost;
    bool pipeBroken = false;
    std::optional<Printer> printer; // while a NeverWaiting lives; its thread alone uses the above then
};

} // namespace zembrastel::cli
