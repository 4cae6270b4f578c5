// How long a thread has been ready to run without a processor: what a measured time owes to other programs.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace zembrastel::testing {

class ProcessorWait {
public:
    // Of the thread that makes it, or of another by its file "schedstat" in /proc, for as long as that one runs.
    explicit ProcessorWait(const char* file = "/proc/thread-self/schedstat")
        : schedstat(open(file, O_RDONLY | O_CLOEXEC)) {}
    ~ProcessorWait() { close(schedstat); }
    ProcessorWait(const ProcessorWait&) = delete;
    ProcessorWait& operator=(const ProcessorWait&) = delete;

    // Since the thread began; zero where there is none, or the kernel keeps no account of it.
    [[nodiscard]] std::chrono::nanoseconds soFar() const {
        char text[96] = {};
        if (pread(schedstat, text, sizeof text - 1, 0) <= 0) return {};
        char* second = nullptr;
        std::strtoull(text, &second, 10); // the first is the time on a processor
        return std::chrono::nanoseconds(std::strtoull(second, nullptr, 10));
    }

private:
    const int schedstat;
};

// What its host has taken from a virtual machine, from all processors together, in steps of a clock tick: to the
// machine it looks as if its threads had computed. Costs 10 microseconds.
class HostTheft {
public:
    HostTheft() : statistics(open("/proc/stat", O_RDONLY | O_CLOEXEC)) {}
    ~HostTheft() { close(statistics); }
    HostTheft(const HostTheft&) = delete;
    HostTheft& operator=(const HostTheft&) = delete;

    // Since the machine began; zero where the host does not report it.
    [[nodiscard]] std::chrono::nanoseconds soFar() const {
        char text[256] = {};
        long long ticks = 0;
        if (pread(statistics, text, sizeof text - 1, 0) <= 0) return {};
        if (std::sscanf(text, "cpu %*d %*d %*d %*d %*d %*d %*d %lld", &ticks) != 1) return {};
        return std::chrono::nanoseconds(std::chrono::seconds(1)) * ticks / sysconf(_SC_CLK_TCK);
    }

private:
    const int statistics;
};

} // namespace zembrastel::testing
