// A folder of its own for one test, removed with all it holds when the object goes.
//
// It lies under TMPDIR (or /tmp), for the owner alone. Not copied or moved: other objects remember its path.
#pragma once

#include <filesystem>

namespace zembrastel::testing {

class TemporaryFolder {
public:
    // Throws std::system_error.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Folders in it that a test closed to itself are opened first.
    ~TemporaryFolder();

    // The real path, no link in it.
    [[nodiscard]] const std::filesystem::path& path() const { return folder; }

    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& name) const { return folder / name; }

private:
    std::filesystem::path folder;
};

} // namespace zembrastel::testing
