// The shape of the folders that are measured: so many files, twelve a folder, five folders deep at most, the folders at
// each level as many times more as it takes.
#pragma once

#include <cstddef>
#include <string>

namespace zembrastel::bench {

class TreeShape {
public:
    explicit TreeShape(std::size_t files);

    [[nodiscard]] std::size_t folders() const { return folderCount; } // the top among them, as number 0

    // Its path relative to the top; a folder's number is above that of the one it is in.
    [[nodiscard]] std::string folder(std::size_t number) const;

    [[nodiscard]] std::size_t filesIn(std::size_t folder) const;

private:
    std::size_t fileCount;
    std::size_t folderCount;
    std::size_t width = 1; // folders in a folder
};

} // namespace zembrastel::bench
