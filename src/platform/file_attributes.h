// Properties of files beside their contents: owner and permissions, lasting inode numbers, open writers.
//
// Any thread. Failures are thrown as std::filesystem::filesystem_error, naming the file.
#pragma once

#include <cstdint>
#include <filesystem>

namespace zembrastel {

// Copies owner, group, permission bits (0777, never setuid, setgid or sticky), access-control list and extended
// attributes from the open file `from` to the open file `to`, as far as the user may set them and the file system
// supports them. If the group or the list cannot be kept, the group gets no more rights than others have. `name` is for
// messages.
void copyAttributes(int from, int to, const std::filesystem::path& name);

// Whether the inode numbers of a file system identify its files. On some file systems the kernel, or the program behind
// them, invents a number when it first reads a file, and another one after it dropped the file from its cache.
enum class InodeNumbers { lasting, passing };

// For a file system type of statfs(2). Unknown types count as lasting, as POSIX requires. All FUSE file systems count
// as passing: some have lasting numbers, but cannot be distinguished.
[[nodiscard]] InodeNumbers inodeNumbersOf(std::int64_t fileSystemType);

// For the file system of an open item.
[[nodiscard]] InodeNumbers inodeNumbersAt(int descriptor);

// True if a program has the file open for writing, or mapped writably. Tested with a read lease, which the kernel
// grants only if there is no writer (fcntl(2), F_SETLEASE). The lease is released at once, so it delays a new writer
// for a moment at most. `file` must be open for reading only. Also false if the system cannot say: for files of other
// users, and on file systems without leases.
[[nodiscard]] bool hasOpenWriter(int file) noexcept;

} // namespace zembrastel
