#include "cli/terminal/live_line.h"

#include "cli/terminal/columns.h"

#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace zembrastel::cli {
namespace {

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

std::string liveLine(std::string_view subject, std::string_view text, std::size_t columns) {
    // Less of a path tells nothing.
    constexpr std::size_t leastSubject = 8;
    const std::size_t rest = columnsOf(text);
    if (subject.empty() || rest + gap.size() + leastSubject > columns) return elidedInMiddle(text, columns);
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
    // The last column stays free: some terminals go to the next line when it is written.
    write(std::string(toLineStart).append(liveLine(subject, text, columns() - 1)).append(eraseToEnd));
    shown = true;
}

std::size_t LiveLine::columns() const {
    winsize size{};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : usualColumns;
}

void LiveLine::write(std::string_view bytes) const {
    // In one piece, or not at all: the next one is a moment away.
    [[maybe_unused]] const ssize_t written = ::write(terminal, bytes.data(), bytes.size());
}

} // namespace zembrastel::cli
