#include "cli/terminal/columns.h"

#include <numeric>
#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <vector>

namespace zembrastel::cli {
namespace {

// A letter with all that joins it.
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

// The macro of ICU narrows integers inside.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

// The character at `at`, which is moved behind it; negative where that is not valid UTF-8.
UChar32 next(std::string_view text, std::size_t& at) {
    UChar32 character = 0;
    U8_NEXT(text.data(), at, text.size(), character);
    return character;
}

#pragma GCC diagnostic pop

std::vector<Cell> cellsOf(std::string_view text) {
    std::vector<Cell> cells;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const UChar32 character = next(text, at);
        const std::size_t columns = character < 0 ? 1 : widthOf(character);
        if (columns == 0 && !cells.empty()) {
            cells.back().bytes += at - start;
        } else {
            cells.push_back({at - start, columns});
        }
    }
    return cells;
}

std::size_t columnsOf(const std::vector<Cell>& cells) {
    return std::accumulate(cells.begin(), cells.end(), std::size_t{0}, [](std::size_t sum, const Cell& cell) {
        return sum + cell.columns;
    });
}

// How many bytes of the cells, in their order, fit into so many columns.
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

} // namespace

std::size_t columnsOf(std::string_view text) { return columnsOf(cellsOf(text)); }

std::string elidedInMiddle(std::string_view text, std::size_t columns) {
    auto cells = cellsOf(text);
    if (columnsOf(cells) <= columns) return std::string(text);
    if (columns == 0) return "";
    // The end tells files apart better than the beginning: it gets the odd column.
    const std::size_t tail = columns / 2;
    const auto front = fittingBytes(cells, columns - 1 - tail);
    const auto back = fittingBytes(std::vector<Cell>(cells.rbegin(), cells.rend()), tail);
    return std::string(text.substr(0, front)) + "…" + std::string(text.substr(text.size() - back));
}

} // namespace zembrastel::cli
