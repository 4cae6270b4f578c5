// Who is told how far an operation has come, with the files that it moves and with the folders that it goes through.
//
// Identity; called on the thread of the operation, which goes on once the call has returned: it must not wait for
// anybody, and throw nothing.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel {

// How often the file in transfer is looked at. One that takes less is never looked at.
inline constexpr std::chrono::milliseconds observationInterval{500};

class TransferObserver {
public:
    virtual ~TransferObserver() = default;

    // A folder was listed, with so many files in it that are to be gone through.
    virtual void folderListed(std::uint64_t files) = 0;

    // One of them was dealt with, in whatever way.
    virtual void fileDone() = 0;

    // A file is about to be sent or fetched. Its size in bytes, where that is known.
    virtual void fileBegins(const std::string& path, std::optional<std::uint64_t> size) = 0;

    // So many bytes of it are through. Called once an observationInterval while the file is in transfer, and at the end
    // of an upload.
    virtual void fileMoved(std::uint64_t bytes) = 0;
};

} // namespace zembrastel
