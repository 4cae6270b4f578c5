#include "cli/terminal/live_line.h"

#include <cstdlib>
#include <numeric>
#include <sys/ioctl.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <unistd.h>
#include <vector>

namespace zembrastel::cli {
namespace {

// A character with its combining marks.
struct Cell {
    std::size_t bytes;
    std::size_t columns;
};

std::size_t widthOf(UChar32 character) {
    const auto kind = U_GET_GC_MASK(character);
    if ((kind & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0) return 0;
    const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

// ICU's macro narrows integers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

// The character at `at`, which moves behind it. Negative if it is not valid UTF-8.
UChar32 nextCharacter(std::string_view text, std::size_t& at) {
    UChar32 character = 0;
    U8_NEXT(text.data(), at, text.size(), character);
    return character;
}

#pragma GCC diagnostic pop

std::vector<Cell> cellsOf(std::string_view text) {
    std::vector<Cell> cells;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const UChar32 character = nextCharacter(text, at);
        const std::size_t columns = character < 0 ? 1 : widthOf(character);
        if (columns == 0 && !cells.empty()) {
            cells.back().bytes += at - start;
        } else {
            cells.push_back({at - start, columns});
        }
    }
    return cells;
}

std::size_t columnsOfCells(const std::vector<Cell>& cells) {
    return std::accumulate(cells.begin(), cells.end(), std::size_t{0}, [](std::size_t sum, const Cell& cell) {
        return sum + cell.columns;
    });
}

// Returns how many bytes of the cells, in their order, fit into so many columns.
template <class Cells>
std::size_t fittingBytes(const Cells& cells, std::size_t columns) {
    std::size_t bytes = 0;
    for (const Cell& cell : cells) {
        if (cell.columns > columns) break;
        columns -= cell.columns;
        bytes += cell.bytes;
    }
    return bytes;
}

constexpr std::size_t usualColumns = 80;
constexpr std::string_view toLineStart = "\r";
constexpr std::string_view eraseToEnd = "\x1b[K";
constexpr std::string_view gap = "  ";

bool canErase() {
    const char* const kind = std::getenv("TERM");
    return kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

int terminalAmong(std::initializer_list<int> streams) {
    for (const int stream : streams) {
        if (::isatty(stream) == 1) return stream;
    }
    return -1;
}

} // namespace

std::size_t columnsOf(std::string_view text) { return columnsOfCells(cellsOf(text)); }

std::string elidedInMiddle(std::string_view text, std::size_t columns) {
    auto cells = cellsOf(text);
    if (columnsOfCells(cells) <= columns) return std::string(text);
    if (columns == 0) return "";
    // The end of a path distinguishes files better than its beginning, so it gets the odd column.
    const std::size_t tail = columns / 2;
    const auto front = fittingBytes(cells, columns - 1 - tail);
    const auto back = fittingBytes(std::vector<Cell>(cells.rbegin(), cells.rend()), tail);
    return std::string(text.substr(0, front)) + "…" + std::string(text.substr(text.size() - back));
}

std::string liveLine(std::string_view subject, std::string_view text, std::size_t columns) {
    // A shorter part of a path is of no use.
    constexpr std::size_t minSubject = 8;
    const std::size_t rest = columnsOf(text);
    if (subject.empty() || rest + gap.size() + minSubject > columns) return elidedInMiddle(text, columns);
    return elidedInMiddle(subject, columns - gap.size() - rest).append(gap).append(text);
}

LiveLine::LiveLine(bool wanted) {
    if (wanted && canErase()) terminal = terminalAmong({STDOUT_FILENO, STDERR_FILENO});
}

void LiveLine::set(std::string_view newSubject, std::string_view newText) {
    if (newSubject == subject && newText == text && shown) return;
    subject = newSubject;
    text = newText;
    if (subject.empty() && text.empty()) {
        hide();
    } else {
        show();
    }
}

void LiveLine::hide() {
    if (!shown) return;
    write(std::string(toLineStart).append(eraseToEnd));
    shown = false;
}

void LiveLine::show() {
    if (!possible() || (subject.empty() && text.empty())) return;
    // The last column stays empty: some terminals go to the next line after writing there.
    write(std::string(toLineStart).append(liveLine(subject, text, columns() - 1)).append(eraseToEnd));
    shown = true;
}

std::size_t LiveLine::columns() const {
    winsize size{};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : usualColumns;
}

void LiveLine::write(std::string_view bytes) const {
    // Not repeated if only a part was written: the next line follows in a moment.
    [[maybe_unused]] const ssize_t written = ::write(terminal, bytes.data(), bytes.size());
}

} // namespace zembrastel::cli
