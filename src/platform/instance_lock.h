// One running program per state folder.
#pragma once

#include "platform/descriptor.h"

#include <filesystem>
#include <optional>

namespace zembrastel {

// Holds an exclusive flock on the file "lock" in the folder, and a claim to the folder's path: if the folder or its
// lock file is moved away and replaced, a second program cannot take the replacement. The kernel releases both when the
// process ends in any way; children do not inherit them.
class InstanceLock {
public:
    // nullopt if another program holds the lock. Throws std::filesystem::filesystem_error if the file cannot be
    // created; the folder must exist.
    [[nodiscard]] static std::optional<InstanceLock> acquire(const std::filesystem::path& folder);

private:
    InstanceLock(Descriptor claimed, Descriptor held) : place(std::move(claimed)), file(std::move(held)) {}

    Descriptor place;
    Descriptor file;
};

} // namespace zembrastel
