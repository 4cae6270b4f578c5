// The text of a directory listing as entries, and the dates of a server.
//
// Pure functions; any thread. Strict: a listing that cannot be read with certainty is refused as a whole with a
// SyncError, and so is one with a name that is no valid path component. Entries come in listing order. The time taken
// grows with the length of the text and with nothing else, whatever a server sends. The text is expected to be UTF-8.
#pragma once

#include "transport/listing/remote_entry.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zembrastel {

// The machine-readable listing (RFC 3659, 7). Entries that are neither file nor folder are left out, links among them.
[[nodiscard]] std::vector<RemoteEntry> parseMLSD(std::string_view text);

// The listing made for people, in its Unix or its Windows form, line by line. It gives no dates. Symbolic links and the
// folder's own entries are left out.
[[nodiscard]] std::vector<RemoteEntry> parseLIST(std::string_view text);

// Does the text end in the middle of a line? Every line of a listing has an end, so the rest of such a text was lost.
[[nodiscard]] bool isCutShort(std::string_view listing);

// Keeps the entries that the other listing shows as well: what a server hides there is not to be offered. Of entries
// with one name the first is kept. The two may be the same.
void keepShown(std::vector<RemoteEntry>& entries, const std::vector<RemoteEntry>& shown);

// The instant of "20200101123456", in UTC; what follows the fourteenth character is not looked at. Nothing when those
// characters are no date and time of the calendar.
[[nodiscard]] std::optional<RemoteDate> parseFTPDate(std::string_view text);

// What stands after "Last-Modified:" in header lines, without the blanks around it. Nothing when no line has it.
[[nodiscard]] std::optional<std::string_view> findLastModified(std::string_view headers);

// The number after "Content-Length:" in header lines. Nothing when no line has one.
[[nodiscard]] std::optional<std::uint64_t> findContentLength(std::string_view headers);

} // namespace zembrastel
