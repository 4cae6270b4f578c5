// The last line of a terminal, which is written over and over while something takes long.
//
// Identity; used on one thread at a time. It is there only for somebody who looks: on a terminal that can erase a line
// (standard output, or else standard error), and never with JSON lines. What else goes to the terminal is put between
// hide() and show(). A line that cannot be written is dropped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// What of "subject  text" fits into so many columns: the subject gives way first, in its middle.
[[nodiscard]] std::string liveLine(std::string_view subject, std::string_view text, std::size_t columns);

class LiveLine {
public:
    explicit LiveLine(bool wanted);
    LiveLine(const LiveLine&) = delete;
    LiveLine& operator=(const LiveLine&) = delete;
    // Leaves nothing of it behind.
    ~LiveLine() { hide(); }

    [[nodiscard]] bool possible() const { return terminal >= 0; }

    // Shows this in place of what was shown before; nothing, where both are empty.
    void set(std::string_view subject, std::string_view text);

    // Takes the line from the terminal, and puts it there again.
    void hide();
    void show();

    // Leaves what is on the terminal there: for one that takes nothing more.
    void abandon() { shown = false; }

private:
    [[nodiscard]] std::size_t columns() const;
    void write(std::string_view bytes) const;

    int terminal = -1;
    std::string subject;
    std::string text;
    bool shown = false;
};

} // namespace zembrastel::cli
