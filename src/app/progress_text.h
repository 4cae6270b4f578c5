// How far work has come, in words for the user.
//
// Pure functions; any thread. Sizes are in units of a thousand.
#pragma once

#include "sync/transfer_progress.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel {

// "12.4 of 80 MB, 3.1 MB/s, about 20 seconds left — 3 of 17 files done"; without a file that takes long, of all files:
// "12 of 640 files done, 3.1 of 45 MB sent, 310 kB/s".
[[nodiscard]] std::string progressText(const TransferProgress& progress);

// What fits into a corner: "12.4 of 80 MB, 3 of 17 files".
[[nodiscard]] std::string shortProgressText(const TransferProgress& progress);

// "184 MB"
[[nodiscard]] std::string sizeText(std::uint64_t bytes);

// From 0 to 1: the part of the file in transfer, or of a comparison of contents, that is done; nullopt if unknown.
[[nodiscard]] std::optional<double> fileFraction(const TransferProgress& progress);

} // namespace zembrastel
