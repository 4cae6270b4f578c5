// The form of texts, times and numbers in the output.
//
// Pure functions; any thread. Local times are those of the process's time zone.
#pragma once

#include "model/server_version.h"
#include "platform/text.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// The text on one line: every run of white space and line breaks becomes one blank, and characters that could control a
// terminal become visible escapes.
[[nodiscard]] std::string oneLine(std::string_view text);

// The name between double quotes, on one line.
[[nodiscard]] std::string inQuotes(std::string_view name);

// The text with blanks up to so many columns, and at least one.
[[nodiscard]] std::string padded(std::string text, std::size_t columns);

[[nodiscard]] std::string filesText(std::uint64_t files); // "1 file", "1,000 files"
[[nodiscard]] std::string bytesText(std::uint64_t bytes);

// What the engine says about a failure, as a sentence in the user's language.
[[nodiscard]] std::string reasonText(const std::exception& error);
[[nodiscard]] std::string reasonText(std::string_view text);

using SystemTime = std::chrono::system_clock::time_point;

// The time of so many seconds since 1970-01-01 00:00:00 UTC, the unit of fingerprints and of sinceUnixEpoch(). A time
// outside the range of SystemTime becomes the nearest one in it.
[[nodiscard]] SystemTime systemTime(std::chrono::duration<double> sinceEpoch);

[[nodiscard]] std::string clockTime(SystemTime time);     // "15:04:05", local
[[nodiscard]] std::string dateAndTime(SystemTime time);   // "2026-01-02 15:04:05", local
[[nodiscard]] std::string universalTime(SystemTime time); // "2026-01-02T14:04:05Z"

} // namespace zembrastel::cli
