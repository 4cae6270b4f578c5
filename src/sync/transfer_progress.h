// The progress of the work on a profile's files, and the rules for its rate and its remaining time.
//
// Values and pure functions; any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel {

struct TransferProgress {
    enum class Work { uploading, downloading, comparing, comparingContents };

    // The file in transfer.
    struct File {
        std::string path;
        std::uint64_t bytes = 0; // transferred so far
        std::optional<std::uint64_t> size = std::nullopt;
        std::optional<double> rate = std::nullopt; // bytes a second
        std::optional<std::chrono::seconds> left = std::nullopt;

        friend bool operator==(const File&, const File&) = default;
    };

    Work work = Work::uploading;
    std::optional<File> file = std::nullopt; // set after its first second
    std::uint64_t filesDone = 0;
    // The known files, including the done ones; 0 if files are not counted, as in a comparison. It can grow while
    // folders are being listed.
    std::uint64_t filesQueued = 0;
    std::uint64_t folders = 0; // listed so far
    // Of all files: the transferred bytes, the bytes to transfer if known, and the rate.
    std::uint64_t bytes = 0;
    std::optional<std::uint64_t> bytesQueued = std::nullopt;
    std::optional<double> rate = std::nullopt; // bytes a second

    friend bool operator==(const TransferProgress&, const TransferProgress&) = default;
};

// The rate of a transfer of one file or several: an exponential moving average, over about `memory`, of the bytes
// between two observations. Bytes before the first observation do not count: connecting takes time, and the system
// buffers the first megabytes of an upload at once.
class TransferRate {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit TransferRate(std::chrono::seconds over = std::chrono::seconds(3)) : memory(over) {}

    void add(Time time, std::uint64_t bytes);

    // In bytes a second; nullopt before the second observation.
    [[nodiscard]] std::optional<double> perSecond() const { return average; }

    // The estimated time for the remaining bytes. Nullopt until the rate has been observed for three seconds, and if
    // the result is over a day: both would be guesses.
    [[nodiscard]] std::optional<std::chrono::seconds> left(std::uint64_t bytesToCome) const;

private:
    std::chrono::duration<double> memory;
    std::optional<Time> first;
    Time last{};
    std::uint64_t seen = 0;
    std::optional<double> average;
};

} // namespace zembrastel
