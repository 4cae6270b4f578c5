// The two standard streams, as plain lines or as JSON lines.
//
// Used on the main thread alone. Every line is written at once and as a whole, so that a pipe has it while the program
// goes on; a reader that is slow is waited for, except while a NeverWaiting lives. A line that cannot be written is
// dropped and the failure remembered: syncing goes on without a reader.
#pragma once

#include "cli/terminal/json_line.h"
#include "cli/terminal/live_line.h"
#include "cli/terminal/printer.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

namespace zembrastel::cli {

class Output {
public:
    explicit Output(bool asJson) : jsonLines(asJson), liveLine(!asJson) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // For a program that publishes: while it lives, no call waits for a reader, and a thread writes the lines.
    class NeverWaiting {
    public:
        // The lines that wait for a reader take up to so many bytes. Further lines are dropped and counted, and the
        // reader is told how many they were.
        static constexpr std::size_t usualRoom = std::size_t{256} << 10U;
        // Drops no line.
        static constexpr std::size_t unlimitedRoom = std::numeric_limits<std::size_t>::max();

        // At its end it waits for the reader to take the rest if `waitsAtEnd` says so then; else the reader has half a
        // second.
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

    // On standard error, on one line: what went wrong, what deserves attention, and what helps a person along (nothing
    // in its place with JSON lines).
    void error(std::string_view message);
    void warning(std::string_view message);
    void note(std::string_view message);

    // What goes on at this moment, on a line that the next call writes over and every other line comes before; see
    // LiveLine. Two empty texts end it. For nobody where there is no terminal: isLive() tells.
    void live(std::string_view subject, std::string_view text);
    [[nodiscard]] bool isLive() const { return liveLine.possible(); }

    // Why results were lost, if they were. A reader that has gone wanted no more: that is no failure. This and
    // unheard() are not called while a NeverWaiting lives.
    [[nodiscard]] const std::error_code& failure() const { return lost; }

    // Has the reader gone? Then a command that only tells has nothing left to do.
    [[nodiscard]] bool unheard() const { return readerGone; }

private:
    void tell(const char* event, std::string_view prefix, std::string_view message);
    void write(int descriptor, std::string_view text);
    void writeNow(int descriptor, std::string_view text);
    [[nodiscard]] std::string unprintedLine(std::size_t lines) const;

    bool jsonLines;
    LiveLine liveLine;
    std::error_code lost;
    bool readerGone = false;
    std::optional<Printer> printer; // while a NeverWaiting lives; its thread alone uses the above then
};

} // namespace zembrastel::cli
