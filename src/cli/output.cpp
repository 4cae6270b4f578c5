#include "cli/output.h"

#include "cli/colour.h"
#include "cli/presentation.h"

#include <cerrno>
#include <string>
#include <unistd.h>

namespace zembrastel {
namespace {

std::error_code writeLine(int descriptor, std::string_view text) {
    const std::string bytes = std::string(text) + '\n';
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return {errno, std::system_category()};
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

} // namespace

std::error_code Output::write(int descriptor, std::string_view text) {
    liveLine.hide();
    const auto failed = writeLine(descriptor, text);
    liveLine.show();
    return failed;
}

void Output::line(std::string_view text) {
    const auto failed = write(STDOUT_FILENO, text);
    readerGone = readerGone || failed == std::errc::broken_pipe;
    if (failed && failed != std::errc::broken_pipe) lost = failed;
}

void Output::error(std::string_view message) {
    tell("error", inColour("zembrastel-cli:", Tone::bad, STDERR_FILENO) + " ", message);
}

void Output::warning(std::string_view message) {
    tell("warning", inColour("zembrastel-cli: warning:", Tone::attention, STDERR_FILENO) + " ", message);
}

void Output::note(std::string_view message) {
    if (!jsonLines) write(STDERR_FILENO, oneLine(message));
}

void Output::tell(const char* event, std::string_view prefix, std::string_view message) {
    const std::string words = oneLine(message);
    // Who cannot be told what went wrong still has the exit code.
    write(STDERR_FILENO, jsonLines ? JsonLine(event).text("message", words).finished() : std::string(prefix) + words);
}

} // namespace zembrastel
