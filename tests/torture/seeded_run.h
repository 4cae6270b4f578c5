// How the torture programs with a seed are told what to do, and end: 0 when every promise held, 1 with the one that did
// not.
#pragma once

#include "torture/require.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <future>
#include <map>
#include <random>
#include <string>

namespace zembrastel::testing {

// Does all of it at once, and throws what the failures among them are, each with the name of its work.
inline void doAtOnce(const std::map<std::string, std::function<void()>>& works) {
    std::map<std::string, std::future<void>> running;
    for (const auto& [name, work] : works) running[name] = std::async(std::launch::async, work);
    std::string failed;
    for (auto& [name, end] : running) {
        try {
            end.get();
        } catch (const std::exception& error) {
            failed += "\n" + name + ": " + error.what();
        }
    }
    require(failed.empty(), failed);
}

class SeededRun {
public:
    explicit SeededRun(const std::string& about) : options(about) {
        options.add_option("--seed", seed, "repeats a run as far as time allows; another each time unless given");
    }

    // Reads the arguments, says the seed and does the work with it. The exit status.
    [[nodiscard]] int run(int count, char** arguments, const std::function<void(std::uint64_t seed)>& work) {
        CLI11_PARSE(options, count, arguments);
        std::setvbuf(stdout, nullptr, _IOLBF, 0); // what a run that is killed has found is not lost
        std::printf("seed %s\n", std::to_string(seed).c_str());
        try {
            work(seed);
            return 0;
        } catch (const std::exception& error) {
            std::printf("FAILED: %s\n", error.what());
            return 1;
        }
    }

    CLI::App options; // for more of them

private:
    std::uint64_t seed = std::random_device{}();
};

} // namespace zembrastel::testing
