#include "measure.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <malloc.h>
#include <new>
#include <sys/resource.h>

namespace {

// Set and read where no other thread allocates.
bool counting = false;
std::size_t allocations = 0;

} // namespace

void* operator new(std::size_t size) {
    if (counting) ++allocations;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace zembrastel::bench {
namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::string decimal(double value) {
    std::array<char, 40> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

} // namespace

Moment now() {
    rusage children{};
    getrusage(RUSAGE_CHILDREN, &children);
    return {
        .wall = seconds(CLOCK_MONOTONIC),
        .own = seconds(CLOCK_PROCESS_CPUTIME_ID),
        .children = seconds(children.ru_utime) + seconds(children.ru_stime)};
}

double threadTime() { return seconds(CLOCK_THREAD_CPUTIME_ID); }

std::size_t heapBytes() {
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

void AllocationCount::begin() {
    allocations = 0;
    counting = true;
}

std::size_t AllocationCount::end() {
    counting = false;
    return allocations;
}

Figures& Figures::set(const std::string& name, double value) {
    text += (text.empty() ? "\"" : ", \"") + name + "\": " + decimal(value);
    return *this;
}

Figures& Figures::set(const std::string& name, const std::vector<double>& values) {
    text += (text.empty() ? "\"" : ", \"") + name + "\": [";
    const char* separator = "";
    for (const double value : values) {
        text += separator + decimal(value);
        separator = ", ";
    }
    text += ']';
    return *this;
}

Figures& Figures::since(const Moment& begin, const Moment& end) {
    set("wall", end.wall - begin.wall);
    set("own", end.own - begin.own);
    return set("children", end.children - begin.children);
}

void Figures::print() const { std::printf("{%s}\n", text.c_str()); }

} // namespace zembrastel::bench
