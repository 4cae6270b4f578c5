#include "cli/text/presentation.h"

#include "cli/terminal/live_line.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <sstream>

namespace zembrastel::cli {
namespace {

// After a refused certificate curl adds four lines of general advice, which do not help users of this program.
std::string withoutCertificateAdvice(std::string_view text) {
    constexpr std::string_view beginning = "\nMore details here: https://curl.se/";
    constexpr std::string_view ending = "please visit the web page mentioned above.";
    std::string result(text);
    const auto from = result.find(beginning);
    const auto to = result.find(ending, from);
    if (to != std::string::npos) result.replace(from, to + ending.size() - from, ".");
    return result;
}

std::string folded(std::string_view text) {
    text = trimmed(text);
    std::string result;
    while (!text.empty()) {
        std::size_t space = 0;
        while (const auto next = leadingWhitespace(text.substr(space))) space += next;
        if (space > 0) {
            result += ' ';
            text.remove_prefix(space);
        } else {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

using ToCalendar = std::tm* (*)(const std::time_t*, std::tm*);

std::string formatted(SystemTime time, ToCalendar toCalendar, const char* format) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
    std::tm calendar{};
    toCalendar(&seconds, &calendar);
    std::ostringstream text;
    text << std::put_time(&calendar, format);
    return std::move(text).str();
}

} // namespace

std::string oneLine(std::string_view text) { return printable(folded(withoutCertificateAdvice(text))); }

std::string inQuotes(std::string_view name) { return translate("\"%1\"", {oneLine(name)}); }

std::string padded(std::string text, std::size_t columns) {
    const std::size_t used = columnsOf(text);
    return std::move(text) + std::string(used < columns ? columns - used : 1, ' ');
}

std::string filesText(std::uint64_t files) { return translatePlural("%n file", "%n files", files); }

std::string bytesText(std::uint64_t bytes) { return translatePlural("%n byte", "%n bytes", bytes); }

std::string reasonText(const std::exception& error) { return reasonText(describe(error)); }

std::string reasonText(std::string_view text) { return translateEngineText(sentence(text)); }

SystemTime systemTime(std::chrono::duration<double> sinceEpoch) {
    using Duration = SystemTime::duration;
    // One second inside the range: a double cannot express its exact end.
    const std::chrono::duration<double> limit = Duration::max() - std::chrono::seconds(1);
    if (std::isnan(sinceEpoch.count())) return {};
    return SystemTime(std::chrono::duration_cast<Duration>(std::clamp(sinceEpoch, -limit, limit)));
}

std::string clockTime(SystemTime time) { return formatted(time, ::localtime_r, "%H:%M:%S"); }

std::string dateAndTime(SystemTime time) { return formatted(time, ::localtime_r, "%F %T"); }

std::string universalTime(SystemTime time) { return formatted(time, ::gmtime_r, "%FT%TZ"); }

} // namespace zembrastel::cli
