#include "cli/terminal/prompt.h"

#include "language/translation.h"
#include "model/error.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/text.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

namespace zembrastel::cli {
namespace {

// While it lives, the terminal shows no typed character except the line feed that ends the line.
class HiddenTyping {
public:
    HiddenTyping() {
        if (::tcgetattr(STDIN_FILENO, &before) != 0) throwFileError("tcgetattr", "terminal");
        termios hidden = before;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        hidden.c_lflag |= ECHONL;
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;
    ~HiddenTyping() { ::tcsetattr(STDIN_FILENO, TCSADRAIN, &before); }

private:
    termios before{};
};

void writeToTerminal(std::string_view text) {
    if (::write(STDERR_FILENO, text.data(), text.size()) < 0) throwFileError("write", "terminal");
}

// One line of the terminal, which delivers whole lines. Throws Cancelled when `wake` becomes readable.
std::string readTypedLine(int wake) {
    std::string line;
    while (line.empty() || line.back() != '\n') {
        std::array<pollfd, 2> waiting{
            {{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0}, {.fd = wake, .events = POLLIN, .revents = 0}}};
        if (::poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) throwFileError("poll", "terminal");
        if (waiting[1].revents != 0) {
            writeToTerminal("\n");
            throw Cancelled();
        }
        if (waiting[0].revents == 0) continue;
        std::array<char, 1024> typed{};
        const ssize_t size = ::read(STDIN_FILENO, typed.data(), typed.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throwFileError("read", "terminal");
        if (size == 0) { // Ctrl-D
            writeToTerminal("\n");
            break;
        }
        line.append(typed.data(), static_cast<std::size_t>(size));
    }
    return firstLine(line);
}

std::string typedAnswer(const std::string& question, Interrupt& interrupt) {
    const Descriptor wake(::eventfd(0, EFD_CLOEXEC));
    if (!wake) throwFileError("eventfd", "terminal");
    const auto interruptible = interrupt.during([&wake] { ::eventfd_write(wake.get(), 1); });
    writeToTerminal(question);
    return readTypedLine(wake.get());
}

} // namespace

bool canAsk() { return ::isatty(STDIN_FILENO) != 0; }

std::string askPassword(const std::string& question, Interrupt& interrupt) {
    const HiddenTyping hidden;
    return typedAnswer(question, interrupt);
}

bool askYesOrNo(const std::string& question, Interrupt& interrupt) {
    const std::string answer =
        asciiLowercase(trimmed(typedAnswer(question + " " + translate("[y/N]") + " ", interrupt)));
    return answer == "y" || answer == "yes" || answer == translate("y") || answer == translate("yes");
}

std::string readStandardInput() {
    std::string bytes;
    while (true) {
        std::array<char, 1 << 16> buffer{};
        const ssize_t size = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throwFileError("read", "standard input");
        if (size == 0) return bytes;
        bytes.append(buffer.data(), static_cast<std::size_t>(size));
    }
}

std::string firstLine(std::string_view text) {
    auto line = text.substr(0, text.find('\n'));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return std::string(line);
}

} // namespace zembrastel::cli
