// Preloaded into a program: its wall clock, and that of its children, runs so many nanoseconds ahead as the file that
// SHIFTED_CLOCK names says at each moment. Other clocks are left as they are.
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr std::int64_t second = 1'000'000'000;

std::int64_t shift() {
    const char* name = std::getenv("SHIFTED_CLOCK");
    const int file = name == nullptr ? -1 : ::open(name, O_RDONLY | O_CLOEXEC);
    std::int64_t nanoseconds = 0;
    if (file >= 0 && ::pread(file, &nanoseconds, sizeof nanoseconds, 0) != sizeof nanoseconds) nanoseconds = 0;
    if (file >= 0) ::close(file);
    return nanoseconds;
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const auto failed = static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
    if (failed != 0 || (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE)) return failed;
    const std::int64_t shifted = now->tv_sec * second + now->tv_nsec + shift();
    *now = {.tv_sec = shifted / second, .tv_nsec = shifted % second};
    return 0;
}

extern "C" int gettimeofday(timeval* now, void*) noexcept {
    timespec exact{};
    if (clock_gettime(CLOCK_REALTIME, &exact) != 0) return -1;
    *now = {.tv_sec = exact.tv_sec, .tv_usec = exact.tv_nsec / 1000};
    return 0;
}

extern "C" time_t time(time_t* now) noexcept {
    timespec exact{};
    clock_gettime(CLOCK_REALTIME, &exact);
    if (now != nullptr) *now = exact.tv_sec;
    return exact.tv_sec;
}
