// Listings of growing size, sound and hostile, through both parsers: the time a byte takes and the memory a byte needs
// must not grow with the listing.
#include "model/error.h"
#include "transport/listing_parsers.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <malloc.h>

namespace zembrastel::testing {
namespace {

constexpr std::size_t megabyte = 1'000'000;

std::string repeated(std::string_view piece, std::size_t size) {
    std::string text;
    text.reserve(size + piece.size());
    while (text.size() < size) text += piece;
    return text;
}

// A line that begins so and goes on like this to the listing's end.
std::string oneLine(std::string_view start, std::string_view piece, std::size_t size) {
    return std::string(start) + repeated(piece, size) + "\r\n";
}

// Lines with numbered names.
std::string ordinary(std::string_view start, std::size_t size) {
    std::string text;
    text.reserve(size + 200);
    for (int number = 0; text.size() < size; ++number) {
        text += start;
        text += "picture " + std::to_string(number) + ".jpeg\r\n";
    }
    return text;
}

using Make = std::function<std::string(std::size_t size)>;

Make all(std::string_view piece) {
    return [piece](std::size_t size) { return repeated(piece, size); };
}

Make line(std::string_view start, std::string_view piece) {
    return [start, piece](std::size_t size) { return oneLine(start, piece, size); };
}

Make numbered(std::string_view start) {
    return [start](std::size_t size) { return ordinary(start, size); };
}

struct Shape {
    const char* name;
    Make make;
};

std::vector<Shape> shapesOfBoth() {
    return {
        {"line feeds", all("\n")},
        {"blanks", all(" ")},
        {"semicolons", all(";")},
        {"semicolons and blanks", all("; ")},
        {"letters", all("a")},
        {"digits", all("0")},
        {"zero bytes", all(std::string_view("\0", 1))},
        {"carriage returns", all("\r")}};
}

std::vector<Shape> shapesOfMLSD() {
    auto shapes = shapesOfBoth();
    shapes.insert(
        shapes.begin(), {{"ordinary", numbered("type=file;modify=20260101123456;perm=adfrw;size=12345; ")},
                         {"shortest lines", all("type=dir; a\n")},
                         {"one name", line("type=file; ", "a")},
                         {"one name of blanks", line("type=file; ", " ")},
                         {"one name, near line breaks", line("type=file; ", "\xE2\x80\xA7\xC2")},
                         {"one fact", line("type=file", "a")},
                         {"empty facts", [](std::size_t size) { return repeated(";", size) + "type=dir; a\n"; }},
                         {"facts that nearly are one",
                          [](std::size_t size) { return repeated("typ=;modif=;", size) + "type=dir; a\n"; }},
                         {"links", numbered("type=OS.unix=slink; ")}});
    return shapes;
}

std::vector<Shape> shapesOfLIST() {
    constexpr std::string_view columns = "-rw-r--r-- 1 web www 3 Jan 1 2026 ";
    auto shapes = shapesOfBoth();
    shapes.insert(
        shapes.begin(), {{"ordinary", numbered("-rw-r--r--   1 web      www         12345 Jan  1 12:00 ")},
                         {"ordinary, Windows", numbered("01-02-2026  10:15AM       <DIR>          ")},
                         {"links", numbered("lrwxrwxrwx 1 web www 3 Jan 1 2026 ")},
                         {"totals", numbered("total ")},
                         {"one name", line(columns, "a")},
                         {"one name of blanks", line(columns, " ")},
                         {"one name, near line breaks", line(columns, "\xE2\x80\xA7\xC2")},
                         {"one column of blanks", line("-rw-r--r-- ", " ")},
                         {"one column of wide blanks", line("-rw-r--r-- 1 web www", "\u3000")},
                         {"one size", line("-rw-r--r-- 1 web www 1", "0")},
                         {"one size of foreign digits", line("-rw-r--r-- 1 web www 1", "\u0663")},
                         {"one owner", line("-rw-r--r-- 1 w", "\u00e9")},
                         {"one size, Windows", line("01-02-2026  10:15AM 1", "0")},
                         {"columns without end", line("-rw-r--r-- 1", " 1")}});
    return shapes;
}

double processorSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Resident memory in bytes: what it is ("VmRSS:"), or was at most since forgetPeak() ("VmHWM:").
double resident(const std::string& which) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == which && status >> kilobytes) return kilobytes * 1024;
    }
    return 0;
}

void forgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

struct Cost {
    double nanoseconds = 0; // a byte
    double bytes = 0;       // a byte
};

template <class Parse>
Cost costOnce(const std::string& text, const Parse& parse) {
    ::malloc_trim(0);
    forgetPeak();
    const double memory = resident("VmRSS:");
    const double start = processorSeconds();
    try {
        (void)parse(text);
    } catch (const SyncError&) {
        // A refusal costs time like everything else.
    }
    const auto size = static_cast<double>(text.size());
    const double taken = (processorSeconds() - start) * 1e9 / size;
    return {taken, (resident("VmHWM:") - memory) / size};
}

Cost lesser(const Cost& one, const Cost& other) {
    return {std::min(one.nanoseconds, other.nanoseconds), std::min(one.bytes, other.bytes)};
}

// The least of several runs: what other programs add to one is not the parser's.
template <class Parse>
Cost cost(const std::string& text, const Parse& parse) {
    constexpr std::size_t bytesToRead = 20 * megabyte;
    Cost best = costOnce(text, parse);
    for (std::size_t runs = std::clamp<std::size_t>(bytesToRead / text.size(), 3, 20); runs > 1; --runs) {
        best = lesser(best, costOnce(text, parse));
    }
    return best;
}

// What is cheaper than this is told by the caches alone: a small text fits into them.
constexpr double cheapNanoseconds = 1;
constexpr double cheapBytes = 1;
constexpr double mostGrowth = 2;
constexpr int mostAgain = 5; // times that is looked at again

bool grows(double small, double large, double cheap) { return large > mostGrowth * std::max(small, cheap); }

bool grows(const Cost& small, const Cost& large) {
    return grows(small.nanoseconds, large.nanoseconds, cheapNanoseconds) || grows(small.bytes, large.bytes, cheapBytes);
}

// Prints a line for each shape and returns how many grow.
template <class Parse>
int measure(const char* parser, const std::vector<Shape>& shapes, std::size_t largest, const Parse& parse) {
    int growing = 0;
    for (const auto& shape : shapes) {
        std::vector<Cost> costs;
        for (std::size_t size = megabyte; size <= largest * megabyte; size *= 10) {
            const auto text = shape.make(size);
            costs.push_back(cost(text, parse));
            // A busy machine slows the few runs of a large one down for a while; what grows stays slow.
            for (int left = mostAgain; left > 0 && grows(costs.front(), costs.back()); --left) {
                costs.back() = lesser(costs.back(), cost(text, parse));
            }
        }
        std::printf("%-5s %-28s", parser, shape.name);
        for (const auto& each : costs) std::printf(" %8.2f ns %5.1f B", each.nanoseconds, each.bytes);
        const bool bad = grows(costs.front(), costs.back());
        std::printf("%s\n", bad ? "  GROWS" : "");
        std::fflush(stdout);
        growing += bad ? 1 : 0;
    }
    return growing;
}

// Names of 16 characters that std::hash cannot tell apart: what a hostile server would choose for them to be slow.
std::vector<RemoteEntry> entriesOfOneHash(std::size_t count) {
    // MurmurHash64A, which the standard library has, and its steps backwards.
    constexpr std::uint64_t factor = 0xc6a4a7935bd1e995;
    constexpr std::uint64_t inverse = 0x5f7a0ea7e59b19bd; // factor * inverse is 1
    static_assert(factor * inverse == 1);
    constexpr std::uint64_t seed = 0xc70f6907;
    const auto mix = [](std::uint64_t value) { return value ^ value >> 47U; }; // and its own reverse
    const auto isPlain = [](unsigned char byte) { return byte > ' ' && byte < 0x7f && byte != '/'; };
    std::vector<RemoteEntry> entries;
    for (std::uint64_t number = 0; entries.size() < count; ++number) {
        char first[9];
        std::snprintf(first, sizeof first, "%08llx", static_cast<unsigned long long>(number));
        std::uint64_t begin = 0;
        std::memcpy(&begin, first, sizeof begin);
        const std::uint64_t state = (seed ^ 16 * factor ^ mix(begin * factor) * factor) * factor;
        const std::uint64_t end = inverse * mix(inverse * state);
        std::array<char, sizeof end> second{};
        std::memcpy(second.data(), &end, sizeof end);
        if (!std::ranges::all_of(second, isPlain)) continue;
        entries.push_back({std::string(first) + std::string(second.data(), second.size()), false, std::nullopt});
    }
    return entries;
}

// How much longer two listings take to be compared when their names were chosen for it. Nothing to speak of.
int measureComparison() {
    constexpr std::size_t count = 20'000;
    const auto chosen = entriesOfOneHash(count);
    if (std::hash<std::string>{}(chosen.front().name) != std::hash<std::string>{}(chosen.back().name)) {
        std::printf("comparing: this library has another hash\n");
        return 0;
    }
    auto ordinaryOnes = chosen;
    for (auto& entry : ordinaryOnes) std::ranges::reverse(entry.name);
    const auto seconds = [](const std::vector<RemoteEntry>& entries) {
        auto kept = entries;
        const double start = processorSeconds();
        keepShown(kept, entries);
        return processorSeconds() - start;
    };
    const double usual = seconds(ordinaryOnes);
    const double hostile = seconds(chosen);
    constexpr double most = 10;
    std::printf("comparing %zu names: %.1f ms, chosen ones %.1f ms\n", count, usual * 1e3, hostile * 1e3);
    return hostile > most * usual ? 1 : 0;
}

int run(int count, char** arguments) {
    CLI::App app{"Listings of 1, 10, 100 ... MB through both parsers: time and memory for each byte"};
    std::size_t largest = 100;
    app.add_option("--megabytes", largest, "The largest listing");
    CLI11_PARSE(app, count, arguments);
    const auto mlsd = shapesOfMLSD();
    const auto list = shapesOfLIST();
    const int growing =
        measure("MLSD", mlsd, largest, parseMLSD) + measure("LIST", list, largest, parseLIST) + measureComparison();
    std::printf(
        "listing time: %zu shapes up to %zu MB, %d costs that grow\n", mlsd.size() + list.size(), largest, growing);
    return growing == 0 ? 0 : 1;
}

} // namespace
} // namespace zembrastel::testing

int main(int count, char** arguments) { return zembrastel::testing::run(count, arguments); }
