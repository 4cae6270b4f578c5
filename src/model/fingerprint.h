// The identity of one version of a local file, and the folder as a map of them.
#pragma once

#include "model/path_map.h"

#include <cstdint>
#include <filesystem>

struct stat;

namespace zembrastel {

// Equal fingerprints mean an unchanged file; a file replaced by one of the same size and time has another inode.
struct Fingerprint {
    std::int64_t size = 0;   // bytes
    double modified = 0;     // seconds since 1970-01-01 00:00:00 UTC, as fine as the file system keeps it
    std::uint64_t inode = 0; // file serial number

    // The fingerprint of the item itself, never of what a link points at. Throws std::filesystem::filesystem_error.
    [[nodiscard]] static Fingerprint read(const std::filesystem::path& file);

    // The fingerprint in attributes that were read already.
    [[nodiscard]] static Fingerprint of(const struct stat& attributes);

    friend bool operator==(const Fingerprint&, const Fingerprint&) = default;
};

// Relative path to fingerprint.
using FileMap = PathMap<Fingerprint>;

} // namespace zembrastel
