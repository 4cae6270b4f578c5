// One running program per state folder.
#pragma once

#include "platform/descriptor.h"

#include <filesystem>
#include <optional>

namespace zembrastel {

// Holds an exclusive flock on the file "lock" in the folder for as long as it lives. The kernel drops the lock when
// the process ends, however it ends; children do not inherit it.
class InstanceLock {
public:
    // Nothing when another program holds the lock. Throws std::filesystem::filesystem_error when the file cannot be
    // made; the folder must exist.
    [[nodiscard]] static std::optional<InstanceLock> acquire(const std::filesystem::path& folder);

private:
    explicit InstanceLock(Descriptor held) : file(std::move(held)) {}

    Descriptor file;
};

} // namespace zembrastel
