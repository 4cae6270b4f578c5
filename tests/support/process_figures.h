// What a process holds of the machine: shows whether a program that runs for long needs more and more.
//
// Any thread. A process that has ended has std::filesystem::filesystem_error thrown.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/types.h>
#include <vector>

namespace zembrastel::testing {

[[nodiscard]] inline std::size_t entriesIn(const std::filesystem::path& folder) {
    namespace fs = std::filesystem;
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

[[nodiscard]] inline std::filesystem::path processFolder(pid_t process) { return "/proc/" + std::to_string(process); }

[[nodiscard]] inline std::size_t threadsOf(pid_t process) { return entriesIn(processFolder(process) / "task"); }

[[nodiscard]] inline std::size_t descriptorsOf(pid_t process) { return entriesIn(processFolder(process) / "fd"); }

// Those that were not waited for included.
[[nodiscard]] inline std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> children;
    for (const auto& thread : std::filesystem::directory_iterator(processFolder(process) / "task")) {
        std::ifstream list(thread.path() / "children");
        for (pid_t child = 0; list >> child;) children.push_back(child);
    }
    return children;
}

// A figure of /proc/PID/status, such as "VmRSS" or "RssAnon", in KiB.
[[nodiscard]] inline std::size_t kibibytesOf(pid_t process, const std::string& figure) {
    std::ifstream status(processFolder(process) / "status");
    std::string word;
    while (status >> word && word != figure + ":") {
    }
    std::size_t value = 0;
    status >> value;
    return value;
}

} // namespace zembrastel::testing
