// A file of the server on its way into a local folder: into a free place, or into the place of an older version.
//
// Blocks its thread. Failures are SyncErrors, or the system's errors passed on.
#pragma once

#include "transport/download/fetching.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class Arrival {
public:
    // For a file that is missing locally; makes its folders.
    Arrival(const std::string& localFolder, const std::string& missing, std::optional<std::uint64_t> listedSize);

    // For a local file that is to be replaced. Throws ChangedMeanwhile if it is not the compared one any more.
    Arrival(const std::string& localFolder, const RemoteChange& change);

    // What fetch() gets; it refers to this object.
    [[nodiscard]] FileToFetch toFetch() const;

    // Puts the fetched file in the free place. Nullopt if a file has appeared there, which is kept.
    [[nodiscard]] std::optional<Fingerprint> install() const;

    // Puts the fetched file in the place of the older version, which becomes a backup. Throws ChangedMeanwhile if the
    // local file changed; it is kept.
    Fingerprint replace(const FTPTransport& transport);

    const std::string path;
    const std::optional<RemoteChange> replaces;

private:
    Arrival(LocalPlace place, std::optional<std::uint64_t> listedSize, std::optional<RemoteChange> change);

    const std::string name;
    const Folder folder;
    const std::optional<std::uint64_t> size;
    StagedFile staged{folder};
};

// Fetches the files with one login; the events come as soon as each file is complete.
void fetchAll(
    const FTPTransport& transport, const std::vector<std::unique_ptr<Arrival>>& arrivals, const FetchEvents& events);

} // namespace zembrastel
