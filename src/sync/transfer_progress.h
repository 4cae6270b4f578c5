// How far the work on a profile's files has come, and the rules for its rate and its remaining time.
//
// Values and pure functions; any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel {

struct TransferProgress {
    enum class Work { uploading, downloading, comparing };

    // The one in transfer.
    struct File {
        std::string path;
        std::uint64_t bytes = 0; // that are through
        std::optional<std::uint64_t> size = std::nullopt;
        std::optional<double> rate = std::nullopt; // bytes a second
        std::optional<std::chrono::seconds> left = std::nullopt;

        friend bool operator==(const File&, const File&) = default;
    };

    Work work = Work::uploading;
    std::optional<File> file = std::nullopt; // once it has taken longer than a moment
    std::uint64_t filesDone = 0;
    // Those known of, the done ones among them; 0 while nobody counts them, as in a comparison. With `folders` there
    // may be more to come.
    std::uint64_t filesQueued = 0;
    std::uint64_t folders = 0; // listed so far
    // Of all files: what went through, how much there is to move where that is known, and the rate.
    std::uint64_t bytes = 0;
    std::optional<std::uint64_t> bytesQueued = std::nullopt;
    std::optional<double> rate = std::nullopt; // bytes a second

    friend bool operator==(const TransferProgress&, const TransferProgress&) = default;
};

// The rate of a transfer, of one file or of several: an exponential moving average over about `memory` of what went
// through between two looks. What went before the first look does not count: connecting takes its time, and a system
// takes the first megabytes of an upload at once, long before they are on the wire.
class TransferRate {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit TransferRate(std::chrono::seconds over = std::chrono::seconds(3)) : memory(over) {}

    void add(Time time, std::uint64_t bytes);

    // In bytes a second; nothing before the second look.
    [[nodiscard]] std::optional<double> perSecond() const { return average; }

    // How long what is still to come will take. Nothing until the rate has been watched for three seconds, nor where
    // it would be over a day: both would be guesses.
    [[nodiscard]] std::optional<std::chrono::seconds> left(std::uint64_t bytesToCome) const;

private:
    std::chrono::duration<double> memory;
    std::optional<Time> first;
    Time last{};
    std::uint64_t seen = 0;
    std::optional<double> average;
};

} // namespace zembrastel
