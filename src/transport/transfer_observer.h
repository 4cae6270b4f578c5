// Receives the progress of an operation: the files that it transfers, and the folders that it visits.
//
// Called on the thread of the operation, which continues when the call has returned. Must not block, and must not
// throw.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel {

// The interval at which the file in transfer is observed. A shorter transfer is not observed.
inline constexpr std::chrono::milliseconds observationInterval{500};

class TransferObserver {
public:
    virtual ~TransferObserver() = default;

    // A folder was listed. `files` of its files will be processed.
    virtual void folderListed(std::uint64_t files) = 0;

    // One of these files was processed.
    virtual void fileDone() = 0;

    // A file is about to be sent or fetched. `size` is in bytes; nullopt if unknown.
    virtual void fileBegins(const std::string& path, std::optional<std::uint64_t> size) = 0;

    // `bytes` of the file are transferred. Called once per observationInterval during the transfer, and at the end of
    // an upload.
    virtual void fileMoved(std::uint64_t bytes) = 0;
};

} // namespace zembrastel
