// Fetches server files to temporary files here, many with one login.
//
// A download that was interrupted continues where it stopped as long as each attempt brings more of it, if the server
// still has the file with the same date and size. Otherwise it begins anew, once.
//
// Blocks its thread, on which all calls of the events are made; what these throw ends the work and is passed on.
#pragma once

#include "model/remote_date.h"
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
    std::optional<std::uint64_t> size = std::nullopt; // as it was listed

    // Only the version of this date is of use. The server is asked before and after the download.
    std::optional<RemoteDate> version = std::nullopt;
};

// Each file that was begun ends in one of `fetched` and `failed`, in the order of the files, except when the work ends
// early.
struct FetchEvents {
    std::function<void(std::size_t file)> begins;

    // All of it is there: it has the size that the server told, and the date of its version.
    std::function<void(std::size_t file)> fetched;

    // A failure of this file alone: SyncError, or ChangedMeanwhile where the server has another version of it.
    std::function<void(std::size_t file, std::exception_ptr why)> failed;
};

// The number of files that are worth one call, at most.
inline constexpr std::size_t mostFetchedTogether = 64;

// Throws SyncError for a failure of the server, Cancelled, and the system's errors.
void fetch(const FTPTransport& transport, const std::vector<FileToFetch>& files, const FetchEvents& events);

} // namespace zembrastel
