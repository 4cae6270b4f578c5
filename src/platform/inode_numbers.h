// Whether the inode number of a file says anything about the file.
//
// Any thread. On some file systems the kernel, or the program behind them, makes numbers up when it first meets a file,
// and others when it meets the same file again after it forgot it.
#pragma once

#include <cstdint>

namespace zembrastel {

enum class InodeNumbers { lasting, passing };

// By the file system's type, as statfs(2) gives it. A type that is not known here has lasting numbers, as POSIX wants
// them. Of FUSE none are relied on: some of its file systems have numbers of their own, but nothing tells which.
[[nodiscard]] InodeNumbers inodeNumbersOf(std::int64_t fileSystemType);

// Of the file system that an open item is on.
[[nodiscard]] InodeNumbers inodeNumbersAt(int descriptor);

} // namespace zembrastel
