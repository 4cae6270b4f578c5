#include "measure.h"

#include "platform/files.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <malloc.h>
#include <new>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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

void runProgram(std::vector<std::string> words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int failed = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throwFileError("posix_spawn", words.front(), failed);
    int status = 0;
    waitpid(process, &status, 0);
    if (status != 0) throw std::runtime_error(words.front() + " failed");
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
