#include "cli/terminal/output.h"

#include "cli/text/presentation.h"
#include "language/translation.h"

#include <cerrno>
#include <cstdlib>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace zembrastel::cli {
namespace {

std::string_view environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

bool showsColours(int descriptor) {
    return environmentValue("NO_COLOR").empty() && environmentValue("TERM") != "dumb"
           && !environmentValue("TERM").empty() && ::isatty(descriptor) != 0;
}

std::string_view escapeSequence(Tone tone) {
    switch (tone) {
    case Tone::good:
        return "\x1b[32m";
    case Tone::attention:
        return "\x1b[33m";
    case Tone::bad:
        return "\x1b[31m";
    }
    return "";
}

void waitForRoom(int descriptor) {
    pollfd waiting{.fd = descriptor, .events = POLLOUT, .revents = 0};
    ::poll(&waiting, 1, -1);
}

// Waits for the reader. After each signal, `givesUp` decides whether to drop the rest.
std::error_code writeLine(int descriptor, std::string_view text, const std::function<bool()>& givesUp) {
    const std::string bytes = std::string(text) + '\n';
    std::string_view rest = bytes;
    while (!rest.empty() && !givesUp()) {
        const ssize_t written = ::write(descriptor, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) { // another program made the stream non-blocking
            waitForRoom(descriptor);
        } else if (errno != EINTR) {
            return {errno, std::system_category()};
        }
    }
    return {};
}

} // namespace

std::string inColour(std::string_view text, Tone tone, int descriptor) {
    if (!showsColours(descriptor)) return std::string(text);
    return std::string(escapeSequence(tone)).append(text).append("\x1b[0m");
}

Output::NeverWaiting::NeverWaiting(Output& usedOutput, std::size_t room, std::function<bool()> waitsAtEnd)
    : output(usedOutput), waits(std::move(waitsAtEnd)) {
    output.printer.emplace(
        room, Printer::Effects{
                  .print = [this](const Printer::Line& line) { output.writeNow(line.stream, line.text); },
                  .showLive = [this](const Printer::Live& live) { output.liveLine.set(live.subject, live.text); },
                  .unprinted = [this](std::size_t lines) { return output.unprintedLine(lines); }});
}

Output::NeverWaiting::~NeverWaiting() {
    if (waits()) output.printer->finish();
    output.printer->end();
    // Nothing more is written to a terminal that takes nothing.
    if (output.printer->givesUp()) output.liveLine.abandon();
    output.printer.reset();
}

void Output::write(int descriptor, std::string_view text) {
    if (printer) {
        printer->print({.stream = descriptor, .text = std::string(text)});
    } else {
        writeNow(descriptor, text);
    }
}

void Output::writeNow(int descriptor, std::string_view text) {
    liveLine.hide();
    const auto failed = writeLine(descriptor, text, [this] { return printer && printer->givesUp(); });
    liveLine.show();
    if (descriptor != STDOUT_FILENO) return; // a user who cannot read the failure still has the exit code
    pipeBroken = pipeBroken || failed == std::errc::broken_pipe;
    if (failed && failed != std::errc::broken_pipe) lost = failed;
}

std::string Output::unprintedLine(std::size_t lines) const {
    if (jsonLines) return JsonLine("unprinted").number("lines", lines).finished();
    return translatePlural("… %n line was not printed", "… %n lines were not printed", lines);
}

void Output::live(std::string_view subject, std::string_view text) {
    if (printer) {
        printer->showLive({.subject = std::string(subject), .text = std::string(text)});
    } else {
        liveLine.set(subject, text);
    }
}

void Output::line(std::string_view text) { write(STDOUT_FILENO, text); }

void Output::error(std::string_view message) {
    report("error", inColour("zembrastel-cli:", Tone::bad, STDERR_FILENO) + " ", message);
}

void Output::warning(std::string_view message) {
    report(
        "warning", inColour("zembrastel-cli: " + translate("warning:"), Tone::attention, STDERR_FILENO) + " ", message);
}

void Output::note(std::string_view message) {
    if (!jsonLines) write(STDERR_FILENO, oneLine(message));
}

void Output::report(const char* event, std::string_view prefix, std::string_view message) {
    const std::string words = oneLine(message);
    write(STDERR_FILENO, jsonLines ? JsonLine(event).text("message", words).finished() : std::string(prefix) + words);
}

} // namespace zembrastel::cli
