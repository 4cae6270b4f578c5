// How a torture program with a seed runs and ends: 0 when every promise held, 1 with the one that did not.
#pragma once

#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>

namespace zembrastel::testing {

[[nodiscard]] inline int seededRun(std::uint64_t seed, const std::function<void()>& work) {
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    std::fflush(stdout);
    try {
        work();
        return 0;
    } catch (const std::exception& error) {
        std::printf("FAILED: %s\n", error.what());
        return 1;
    }
}

} // namespace zembrastel::testing
