// Whether the inode numbers of a file system identify its files.
//
// Any thread. On some file systems the kernel, or the program behind them, invents a number when it first reads a file,
// and another one when it reads the file again after dropping it from its cache.
#pragma once

#include <cstdint>

namespace zembrastel {

enum class InodeNumbers { lasting, passing };

// For a file system type of statfs(2). Unknown types count as lasting, as POSIX requires. All FUSE file systems count
// as passing: some have lasting numbers, but cannot be distinguished.
[[nodiscard]] InodeNumbers inodeNumbersOf(std::int64_t fileSystemType);

// For the file system of an open item.
[[nodiscard]] InodeNumbers inodeNumbersAt(int descriptor);

} // namespace zembrastel
