// The program that tries hard to break the promises: `torture NAME [OPTION...]`.
//
// Each other source of this folder defines one Torture.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

namespace zembrastel::testing {

// How hard to try. The same seed repeats a run as far as time allows.
struct Effort {
    std::size_t rounds = 0;
    std::size_t lanes = 0; // at a time
    double seconds = 0;
    std::uint64_t seed = 0;
};

struct Torture {
    const char* name;
    const char* about;
    Effort usual;                      // what is 0 cannot be chosen, but for the seed
    void (*run)(const Effort& effort); // throws if a promise is broken
};

extern const Torture decisions;
extern const Torture endurance;
extern const Torture kills;
extern const Torture localFiles;
extern const Torture machineFaults;
extern const Torture pathSafety;
extern const Torture threads;
extern const Torture twoEditors;

inline void require(bool held, const std::string& broken) {
    if (!held) throw std::runtime_error(broken);
}

// Does all of it at once, and throws the failures, each with the name of its work.
void doAtOnce(const std::map<std::string, std::function<void()>>& works);

} // namespace zembrastel::testing
