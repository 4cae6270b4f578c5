// Whether a program has a file open for writing, or mapped into its memory writably.
//
// Tested with a read lease, which the kernel grants only if there is no writer (fcntl(2), F_SETLEASE). The lease is
// released at once, so it delays a new writer for a moment at most. Any thread.
#pragma once

namespace zembrastel {

// `file` must be open for reading only. Also false if the system cannot say: for files of other users, and on file
// systems without leases.
[[nodiscard]] bool hasOpenWriter(int file) noexcept;

} // namespace zembrastel
