// How long a thread has been ready to run without a processor: what a measured time owes to other programs.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <string>
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

// How long the control group of this process had used up its share of the processors, from all processors together.
// See cpu.stat in the kernel's "Control Group v2" and "CFS Bandwidth Control".
class QuotaWait {
public:
    QuotaWait() : statistics(open(statisticsFile().c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~QuotaWait() { close(statistics); }
    QuotaWait(const QuotaWait&) = delete;
    QuotaWait& operator=(const QuotaWait&) = delete;

    // Since the group was made; zero where it has no quota.
    [[nodiscard]] std::chrono::nanoseconds soFar() const {
        char text[1024] = {};
        if (pread(statistics, text, sizeof text - 1, 0) <= 0) return {};
        if (const char* const found = std::strstr(text, "throttled_time ")) {
            return std::chrono::nanoseconds(std::atoll(found + std::strlen("throttled_time ")));
        }
        const char* const found = std::strstr(text, "throttled_usec ");
        return std::chrono::microseconds(found == nullptr ? 0 : std::atoll(found + std::strlen("throttled_usec ")));
    }

private:
    static std::string statisticsFile() {
        std::ifstream groups("/proc/self/cgroup"); // "1:cpu:/group" of version 1, "0::/group" of version 2
        std::string unified;
        for (std::string line; std::getline(groups, line);) {
            const auto path = line.substr(line.rfind(':') + 1);
            if (line.find(":cpu:") != std::string::npos) return "/sys/fs/cgroup/cpu" + path + "/cpu.stat";
            if (line.find(":cpu,cpuacct:") != std::string::npos)
                return "/sys/fs/cgroup/cpu,cpuacct" + path + "/cpu.stat";
            if (line.starts_with("0::")) unified = "/sys/fs/cgroup" + path + "/cpu.stat";
        }
        return unified;
    }

    const int statistics;
};

} // namespace zembrastel::testing
