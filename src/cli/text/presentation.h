// How texts, times and numbers are put before a person, one line at a time.
//
// Pure functions; any thread. Local times are those of the process's time zone.
#pragma once

#include "model/server_version.h"
#include "platform/text.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// On one line: every run of white space and line breaks is one blank, and what a terminal could take for a command is
// spelled out.
[[nodiscard]] std::string oneLine(std::string_view text);

// The name between double quotes, on one line.
[[nodiscard]] std::string inQuotes(std::string_view name);

// "1 file", "2 files", "1,000 files".
[[nodiscard]] std::string counted(std::uint64_t number, std::string_view singular);

using SystemTime = std::chrono::system_clock::time_point;

// Of seconds since 1970-01-01 00:00:00 UTC, as fingerprints and, by sinceUnixEpoch(), remote dates count them. What is
// out of the range of SystemTime becomes its nearest end.
[[nodiscard]] SystemTime systemTime(std::chrono::duration<double> sinceEpoch);

[[nodiscard]] std::string clockTime(SystemTime time);     // "15:04:05", local
[[nodiscard]] std::string dateAndTime(SystemTime time);   // "2026-01-02 15:04:05", local
[[nodiscard]] std::string universalTime(SystemTime time); // "2026-01-02T14:04:05Z"

} // namespace zembrastel::cli
