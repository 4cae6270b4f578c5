// Fetches server files to temporary files here, many with one login.
//
// An interrupted download continues where it stopped, as long as each attempt makes progress and the server's file
// keeps its date and size. Otherwise it begins again, once.
//
// Blocks its thread and calls the events on it. An exception of an event ends the work and is passed on.
#pragma once

#include "model/server_version.h"
#include "transport/download/local_replacement.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

struct FTPTransport;

struct FileToFetch {
    std::string path; // relative to the remote folder
    const StagedFile& into;
    std::optional<std::uint64_t> size = std::nullopt; // as listed

    // If set, only the version with this date is accepted. It is checked before and after the download.
    std::optional<RemoteDate> version = std::nullopt;
};

// Each begun file ends in `fetched` or `failed`, in the order of the files, unless the work ends early.
struct FetchEvents {
    std::function<void(std::size_t file)> begins;

    // The file is complete: it has the size that the server reports, and the date of its version.
    std::function<void(std::size_t file)> fetched;

    // A failure of this file alone: SyncError, or ChangedMeanwhile if the server has another version of it.
    std::function<void(std::size_t file, std::exception_ptr why)> failed;
};

// The most files for one call.
inline constexpr std::size_t maxFetchedTogether = 64;

// Throws SyncError for a failure of the server, Cancelled, and the system's errors.
void fetch(const FTPTransport& transport, const std::vector<FileToFetch>& files, const FetchEvents& events);

} // namespace zembrastel
