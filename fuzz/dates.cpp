// The two forms in which a server tells a date.
#include "platform/text.h"
#include "promise.h"
#include "targets.h"
#include "transport/listing/listing_parsers.h"

#include <array>
#include <cmath>
#include <string>

namespace zembrastel::fuzz {
namespace {

using namespace std::chrono;

constexpr std::array weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct Parts {
    year_month_day date{};
    hh_mm_ss<seconds> time{};
};

Parts partsOf(sys_seconds instant) {
    const auto day = floor<days>(instant);
    return {year_month_day(day), hh_mm_ss(instant - day)};
}

std::string digits(auto value, std::size_t width) {
    auto text = std::to_string(static_cast<long>(value));
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string timeText(const Parts& parts, const char* between) {
    return digits(parts.time.hours().count(), 2) + between + digits(parts.time.minutes().count(), 2) + between
           + digits(parts.time.seconds().count(), 2);
}

std::string ftpText(sys_seconds instant) {
    const Parts parts = partsOf(instant);
    return digits(static_cast<int>(parts.date.year()), 4) + digits(static_cast<unsigned>(parts.date.month()), 2)
           + digits(static_cast<unsigned>(parts.date.day()), 2) + timeText(parts, "");
}

std::string headerText(sys_seconds instant) {
    const Parts parts = partsOf(instant);
    return std::string(weekdays[weekday(floor<days>(instant)).c_encoding()]) + ", "
           + digits(static_cast<unsigned>(parts.date.day()), 2) + " "
           + months[static_cast<unsigned>(parts.date.month()) - 1] + " "
           + digits(static_cast<int>(parts.date.year()), 4) + " " + timeText(parts, ":") + " GMT";
}

// Any instant of the years 1 to 9999, made from the input: what is written in the usual form is always read.
sys_seconds instantFrom(std::string_view input) {
    constexpr sys_seconds first = sys_days(year(1) / 1 / 1);
    constexpr sys_seconds end = sys_days(year(10000) / 1 / 1);
    std::uint64_t number = 0;
    for (const char byte : input.substr(0, sizeof number)) number = number << 8U | static_cast<unsigned char>(byte);
    return first + seconds(number % static_cast<std::uint64_t>((end - first).count()));
}

} // namespace

void dates(std::string_view input) {
    if (const auto date = parseFTPDate(input)) {
        const auto since1970 = sinceUnixEpoch(*date).count();
        promise(since1970 == std::floor(since1970), "a date of MLSD is a whole second");
        const auto instant = sys_seconds(seconds(static_cast<std::int64_t>(since1970)));
        promise(ftpText(instant) == input.substr(0, 14), "a date of MLSD is the one that was written");
    }
    const auto value = findLastModified(input);
    promise(!value || *value == trimmed(*value), "no blank belongs to a date");
    if (const auto instant = parseHttpDate(value.value_or(input))) {
        constexpr auto farthest = seconds(100'000'000LL * 24 * 60 * 60);
        promise(abs(instant->time_since_epoch()) <= farthest, "a date of a header is one that a calendar knows");
        (void)toRemoteDate(*instant);
    }
    const auto instant = instantFrom(input);
    const auto read = parseFTPDate(ftpText(instant));
    promise(read == toRemoteDate(instant), "every date is read in the form of MLSD");
    constexpr sys_seconds gregorian = sys_days(year(1582) / 10 / 15);
    if (instant >= gregorian) promise(parseHttpDate(headerText(instant)) == instant, "every date is read in a header");
}

} // namespace zembrastel::fuzz
