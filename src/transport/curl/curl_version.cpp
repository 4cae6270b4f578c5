#include "transport/curl/conversation.h"

#include "platform/child_process.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/text.h"

#include <filesystem>
#include <sys/mman.h>

namespace zembrastel {

std::string curlVersion() {
    const Descriptor printed(::memfd_create("version", MFD_CLOEXEC));
    if (!printed) return {};
    try {
        ChildProcess curl({.executable = curlExecutable, .arguments = {"--version"}, .output = printed.get()});
        curl.start();
        curl.closeInput();
        if (!curl.wait(std::chrono::milliseconds(500))) return {};
        (void)curl.collect();
        // Its entry in /proc opens the file from the beginning: "curl 7.88.1 (x86_64-pc-linux-gnu) …".
        const std::string text = readFile("/proc/self/fd/" + std::to_string(printed.get())).value_or("");
        const auto words = splitNonEmpty(text, ' ');
        return words.size() > 1 && words[0] == "curl" ? std::string(words[1]) : std::string();
    } catch (const std::filesystem::filesystem_error&) {
        return {}; // a transfer reports that curl cannot be started
    }
}

} // namespace zembrastel
