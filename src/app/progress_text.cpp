#include "app/progress_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;

struct Unit {
    double bytes;
    const char* name;
};

constexpr Unit kilobytes{1e3, "kB"};
constexpr std::array largerUnits{Unit{1e12, "TB"}, Unit{1e9, "GB"}, Unit{1e6, "MB"}};

Unit unitOf(double bytes) {
    for (const auto& unit : largerUnits) {
        if (bytes >= unit.bytes) return unit;
    }
    return kilobytes;
}

std::string withDecimals(double number, int decimals) {
    constexpr std::size_t longest = 32;
    std::array<char, longest> digits{};
    const auto written =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, decimals);
    return {digits.data(), written.ptr};
}

// In this unit, from MB with one decimal below 100. A zero decimal stays, so that the text keeps its width.
std::string inUnit(double bytes, const Unit& unit) {
    const bool fine = unit.bytes > kilobytes.bytes && bytes < 100 * unit.bytes;
    return withDecimals(bytes / unit.bytes, fine ? 1 : 0);
}

std::string withUnit(double bytes) {
    const Unit unit = unitOf(bytes);
    return inUnit(bytes, unit) + ' ' + unit.name;
}

// "12.4 of 80 MB"
std::string amount(std::uint64_t bytes, std::optional<std::uint64_t> size) {
    const auto through = static_cast<double>(bytes);
    if (!size) return withUnit(through);
    const auto all = static_cast<double>(*size);
    const Unit unit = unitOf(all);
    std::string whole = inUnit(all, unit);
    if (whole.ends_with(".0")) whole.resize(whole.size() - 2);
    return inUnit(through, unit) + " of " + whole + ' ' + unit.name;
}

std::string counted(std::uint64_t number, std::string_view singular) {
    return std::to_string(number) + ' ' + std::string(singular) + (number == 1 ? "" : "s");
}

std::string about(std::int64_t number, std::string_view unit) {
    return "about " + counted(static_cast<std::uint64_t>(number), unit) + " left";
}

// Rounded up: to five seconds, to a minute, or to an hour.
std::string leftText(std::chrono::seconds left) {
    constexpr std::int64_t step = 5;
    const auto steps = (left.count() + step - 1) / step;
    if (steps <= 1) return "a few seconds left";
    if (steps * step < 60) return about(steps * step, "second");
    if (left <= 1h) return about(std::chrono::ceil<std::chrono::minutes>(left).count(), "minute");
    return about(std::chrono::ceil<std::chrono::hours>(left).count(), "hour");
}

bool isSent(const TransferProgress& progress) {
    const auto& file = progress.file;
    return progress.work == TransferProgress::Work::uploading && file && file->size == file->bytes;
}

std::string rateText(double rate) { return rate < kilobytes.bytes ? "less than 1 kB/s" : withUnit(rate) + "/s"; }

std::string fileText(const TransferProgress& progress) {
    const auto& file = *progress.file;
    // The server is still storing the file, for an unknown time.
    if (isSent(progress)) return withUnit(static_cast<double>(file.bytes)) + " sent, waiting for the server";
    std::string text = amount(file.bytes, file.size);
    // A transfer that stands still shows no rate.
    if (file.rate && *file.rate >= 1) text += ", " + rateText(*file.rate);
    if (file.left) text += ", " + leftText(*file.left);
    return text;
}

std::string filesOf(const TransferProgress& progress) {
    return std::to_string(progress.filesDone) + " of " + counted(progress.filesQueued, "file");
}

// Empty where there is but one file.
std::string countText(const TransferProgress& progress) {
    if (progress.work == TransferProgress::Work::comparing) {
        return "Compared " + counted(progress.filesDone, "file") + " in " + counted(progress.folders, "folder")
               + " so far";
    }
    if (progress.folders > 0) {
        return filesOf(progress) + " found so far, in " + counted(progress.folders, "folder");
    }
    return progress.filesQueued > 1 ? filesOf(progress) + " done" : "";
}

// "3.1 of 45 MB sent, 310 kB/s": of all files.
std::string bytesText(const TransferProgress& progress) {
    if (!progress.bytesQueued || progress.bytes == 0) return "";
    std::string text = amount(progress.bytes, progress.bytesQueued) + " sent";
    return progress.rate && *progress.rate >= 1 ? text + ", " + rateText(*progress.rate) : text;
}

// "248 of 612 files, 71.3 of 184 MB, about 2 minutes left"
std::string contentsText(const TransferProgress& progress) {
    std::string text = filesOf(progress) + ", " + amount(progress.bytes, progress.bytesQueued);
    if (!progress.bytesQueued || !progress.rate || *progress.rate < 1) return text;
    const auto toCome = *progress.bytesQueued - std::min(progress.bytes, *progress.bytesQueued);
    const std::chrono::duration<double> left(static_cast<double>(toCome) / *progress.rate);
    return left > 24h ? text : text + ", " + leftText(std::chrono::ceil<std::chrono::seconds>(left));
}

std::string joined(std::string text, std::string_view separator, std::string_view rest) {
    if (!text.empty() && !rest.empty()) text += separator;
    return text.append(rest);
}

} // namespace

std::string sizeText(std::uint64_t bytes) { return withUnit(static_cast<double>(bytes)); }

std::string progressText(const TransferProgress& progress) {
    if (progress.work == TransferProgress::Work::comparingContents) return contentsText(progress);
    if (progress.file) return joined(fileText(progress), " — ", countText(progress));
    const std::string count = countText(progress);
    return count.empty() ? "" : joined(count, ", ", bytesText(progress));
}

std::string shortProgressText(const TransferProgress& progress) {
    if (progress.work == TransferProgress::Work::comparingContents) return filesOf(progress);
    if (progress.work == TransferProgress::Work::comparing) {
        return counted(progress.filesDone, "file") + ", " + counted(progress.folders, "folder");
    }
    const bool several = progress.folders > 0 || progress.filesQueued > 1;
    return joined(
        progress.file ? amount(progress.file->bytes, progress.file->size) : "", ", ", several ? filesOf(progress) : "");
}

std::optional<double> fileFraction(const TransferProgress& progress) {
    if (progress.work == TransferProgress::Work::comparingContents && progress.bytesQueued.value_or(0) > 0) {
        return std::min(1.0, static_cast<double>(progress.bytes) / static_cast<double>(*progress.bytesQueued));
    }
    const auto& file = progress.file;
    if (!file || !file->size || *file->size == 0) return std::nullopt;
    return static_cast<double>(file->bytes) / static_cast<double>(*file->size);
}

} // namespace zembrastel
