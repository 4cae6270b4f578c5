// The two standard streams, as plain lines or as JSON lines.
//
// Used on the main thread alone. Every line is written at once and as a whole, so that a pipe has it while the program
// goes on. A line that cannot be written is dropped and the failure remembered: syncing goes on without a reader.
#pragma once

#include "cli/json_line.h"
#include "cli/live_line.h"

#include <string_view>
#include <system_error>

namespace zembrastel {

class Output {
public:
    explicit Output(bool asJson) : jsonLines(asJson), liveLine(!asJson) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

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
    void live(std::string_view subject, std::string_view text) { liveLine.set(subject, text); }
    [[nodiscard]] bool isLive() const { return liveLine.possible(); }

    // Why results were lost, if they were. A reader that has gone wanted no more: that is no failure.
    [[nodiscard]] const std::error_code& failure() const { return lost; }

    // Has the reader gone? Then a command that only tells has nothing left to do.
    [[nodiscard]] bool unheard() const { return readerGone; }

private:
    void tell(const char* event, std::string_view prefix, std::string_view message);
    std::error_code write(int descriptor, std::string_view text);

    bool jsonLines;
    LiveLine liveLine;
    std::error_code lost;
    bool readerGone = false;
};

} // namespace zembrastel
