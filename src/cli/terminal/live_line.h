// The last line of a terminal, which is overwritten again and again while work takes long.
//
// Identity; used on one thread at a time. The line exists only on a terminal that can erase a line (standard output, or
// else standard error), and never with JSON lines. Other output to the terminal belongs between hide() and show(). A
// line that cannot be written is dropped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// The columns that a text takes on a terminal: two for a wide East Asian character or an emoji, none for an accent that
// joins the letter before it. The text is valid UTF-8 without control characters.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

// The text in at most so many columns. If it is longer, "…" replaces its middle. No character is torn.
[[nodiscard]] std::string elidedInMiddle(std::string_view text, std::size_t columns);

// "subject  text" in at most so many columns. The subject is shortened first, in its middle.
[[nodiscard]] std::string liveLine(std::string_view subject, std::string_view text, std::size_t columns);

class LiveLine {
public:
    explicit LiveLine(bool wanted);
    LiveLine(const LiveLine&) = delete;
    LiveLine& operator=(const LiveLine&) = delete;
    ~LiveLine() { hide(); }

    [[nodiscard]] bool possible() const { return terminal >= 0; }

    // Shows this instead of the previous texts; nothing if both are empty.
    void set(std::string_view subject, std::string_view text);

    // Erases the line from the terminal, and writes it there again.
    void hide();
    void show();

    // Leaves the line on the terminal: for one that accepts no more output.
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
