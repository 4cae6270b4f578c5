// One running program per state folder.
#pragma once

#include "platform/descriptor.h"

#include <filesystem>
#include <optional>

namespace zembrastel {

// Holds an exclusive flock on the file "lock" in the folder for as long as it lives, and a claim to the folder's place:
// when the folder is moved away, or its lock file, and another is put in its place, that is not given to a second
// program. The kernel drops both when the process ends, however it ends; children do not inherit them.
class InstanceLock {
public:
    // Nothing when another program holds the lock. Throws std::filesystem::filesystem_error when the file cannot be
    // made; the folder must exist.
    [[nodiscard]] static std::optional<InstanceLock> acquire(const std::filesystem::path& folder);

private:
    InstanceLock(Descriptor claimed, Descriptor held) : place(std::move(claimed)), file(std::move(held)) {}

    Descriptor place;
    Descriptor file;
};

} // namespace zembrastel
