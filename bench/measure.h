// What a measurement reads before and after, and how it prints its figures.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zembrastel::bench {

// Seconds; differences between two of them are what counts.
struct Moment {
    double wall = 0;
    double own = 0;      // processor time of this process, user and system
    double children = 0; // of its children that have ended and were collected
};

[[nodiscard]] Moment now();

// Processor time of the calling thread, in seconds.
[[nodiscard]] double threadTime();

// What malloc has given out, its own headers included.
[[nodiscard]] std::size_t heapBytes();

// How often operator new was called while `work` ran.
class AllocationCount {
public:
    void begin();
    [[nodiscard]] std::size_t end();
};

// Runs a program to its end, with this process's standard input, its output thrown away. Throws std::runtime_error when
// it fails, std::filesystem::filesystem_error when it cannot be started.
void runProgram(std::vector<std::string> words);

// One line of JSON on standard output: an object of numbers and lists of numbers.
class Figures {
public:
    Figures& set(const std::string& name, double value);
    Figures& set(const std::string& name, const std::vector<double>& values);
    Figures& since(const Moment& begin, const Moment& end = now()); // "wall", "own" and "children"
    void print() const;

private:
    std::string text;
};

// Does the work and returns how long that took.
template <class Work>
void printTimeOf(const Work& work) {
    const Moment begin = now();
    work();
    Figures().since(begin).print();
}

} // namespace zembrastel::bench
