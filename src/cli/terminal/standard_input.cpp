#include "cli/terminal/standard_input.h"

#include "platform/files.h"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace zembrastel::cli {

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

} // namespace zembrastel::cli
