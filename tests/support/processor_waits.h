// How long threads have been ready to run without a processor: what a measured time owes to other programs.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>

namespace zembrastel::testing {

// Of every thread of this process, of which some do what the measured one waits for. Zero where the kernel keeps no
// account of it.
class ProcessorWaits {
public:
    static ProcessorWaits soFar() {
        ProcessorWaits waits;
        for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) waits.add(thread.path());
        return waits;
    }

    // Counts another process too, by its directory in /proc.
    void add(const std::filesystem::path& process) {
        std::int64_t running = 0;
        std::int64_t waiting = 0;
        std::ifstream(process / "schedstat") >> running >> waiting;
        byThread[process] = std::chrono::nanoseconds(waiting);
    }

    [[nodiscard]] std::chrono::nanoseconds since(const ProcessorWaits& before) const {
        std::chrono::nanoseconds sum{};
        for (const auto& [thread, waited] : byThread) {
            const auto earlier = before.byThread.find(thread);
            if (earlier == before.byThread.end()) {
                sum += waited;
            } else if (waited > earlier->second) { // else it has just ended
                sum += waited - earlier->second;
            }
        }
        return sum;
    }

private:
    std::map<std::filesystem::path, std::chrono::nanoseconds> byThread;
};

} // namespace zembrastel::testing
