// Parses directory listings and the server's dates.
//
// Pure functions; any thread. Strict: a listing that cannot be read with certainty, or that has a name that is no valid
// path component, is refused as a whole with a SyncError. Entries keep the order of the listing. The time is
// proportional to the length of the text, whatever a server sends. The text must be UTF-8.
#pragma once

#include "transport/listing/remote_entry.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zembrastel {

// The machine-readable listing (RFC 3659, 7). Entries that are neither file nor folder, such as links, are skipped.
[[nodiscard]] std::vector<RemoteEntry> parseMLSD(std::string_view text);

// The human-readable listing, in its Unix or Windows form. It gives no dates. Symbolic links, "." and ".." are skipped.
[[nodiscard]] std::vector<RemoteEntry> parseLIST(std::string_view text);

// True if the text ends in the middle of a line: then its end was lost.
[[nodiscard]] bool isCutShort(std::string_view listing);

// Keeps the entries that the other listing shows too: items that a server hides there are not offered. Of entries with
// one name the first is kept. Both arguments may be the same object.
void keepShown(std::vector<RemoteEntry>& entries, const std::vector<RemoteEntry>& shown);

// The instant of "20200101123456", in UTC; characters after the fourteenth are ignored. Nullopt if the text is not a
// valid date and time.
[[nodiscard]] std::optional<RemoteDate> parseFTPDate(std::string_view text);

// The value of "Last-Modified:" in header lines, trimmed. Nullopt if there is none.
[[nodiscard]] std::optional<std::string_view> findLastModified(std::string_view headers);

// The number after "Content-Length:" in header lines. Nullopt if there is none.
[[nodiscard]] std::optional<std::uint64_t> findContentLength(std::string_view headers);

} // namespace zembrastel
