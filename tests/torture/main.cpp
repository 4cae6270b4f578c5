#include "support/temporary_folder.h"
#include "torture/torture.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <future>
#include <random>

namespace zembrastel::testing {

void doAtOnce(const std::map<std::string, std::function<void()>>& works) {
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

namespace {

// 0 if every promise held, 1 with the one that did not.
int attempt(const Torture& torture, const Effort& effort) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // a killed run does not lose what it found
    std::printf("seed %s\n", std::to_string(effort.seed).c_str());
    const TemporaryFolder temporary;
    ::setenv("TMPDIR", temporary.path().c_str(), 1);
    try {
        torture.run(effort);
        return 0;
    } catch (const std::exception& error) {
        std::printf("FAILED: %s\n", error.what());
        return 1;
    }
}

int tortured(int count, char** arguments) {
    CLI::App options("Tries hard to break the promises.");
    options.require_subcommand(1);
    std::map<std::string, Effort> efforts;
    int status = 0;
    for (const auto* torture :
         {&decisions, &endurance, &kills, &localFiles, &machineFaults, &pathSafety, &threads, &twoEditors}) {
        Effort& effort = efforts[torture->name] = torture->usual;
        effort.seed = std::random_device{}();
        auto* command = options.add_subcommand(torture->name, torture->about);
        command->add_option("--seed", effort.seed, "another each time unless given");
        if (effort.rounds > 0) command->add_option("--rounds", effort.rounds, "how often");
        if (effort.lanes > 0) command->add_option("--lanes", effort.lanes, "at a time")->check(CLI::PositiveNumber);
        if (effort.seconds > 0) command->add_option("--seconds", effort.seconds, "how long");
        command->callback([torture, &effort, &status] { status = attempt(*torture, effort); });
    }
    CLI11_PARSE(options, count, arguments);
    return status;
}

} // namespace
} // namespace zembrastel::testing

int main(int count, char** arguments) { return zembrastel::testing::tortured(count, arguments); }
