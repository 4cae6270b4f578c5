// The identity of one version of a local file, and a local folder as a map of them.
#pragma once

#include "model/path_map.h"
#include "platform/file_attributes.h"

#include <cstdint>
#include <filesystem>

struct stat;

namespace zembrastel {

class Folder;

// Equal fingerprints mean an unchanged file. A file that was replaced by one of the same size and time has another
// inode.
struct Fingerprint {
    std::int64_t size = 0;   // bytes
    double modified = 0;     // seconds since 1970-01-01 00:00:00 UTC, as fine as the file system keeps it
    std::uint64_t inode = 0; // file serial number; 0 if the file system has no lasting ones

    // The fingerprint of the item itself, not of a link's target. Throws std::filesystem::filesystem_error.
    [[nodiscard]] static Fingerprint read(const std::filesystem::path& file);

    // The fingerprint from attributes of an item in the folder.
    [[nodiscard]] static Fingerprint of(const Folder& folder, const struct stat& attributes);
    [[nodiscard]] static Fingerprint of(InodeNumbers numbers, const struct stat& attributes);

    friend bool operator==(const Fingerprint&, const Fingerprint&) = default;
};

// True if `now` is another version than the recorded one. If the file system has no lasting inode numbers, `now` has
// none, and a recorded one (of an older release, or of another disk) does not count.
[[nodiscard]] constexpr bool isOtherVersion(const Fingerprint& now, const Fingerprint& recorded) {
    return now.size != recorded.size || now.modified != recorded.modified
           || (now.inode != 0 && now.inode != recorded.inode);
}

// Relative path to fingerprint.
using FileMap = PathMap<Fingerprint>;

} // namespace zembrastel
