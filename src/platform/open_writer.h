// Whether a program has a file open for writing, or mapped into its memory writably.
//
// Asked by a read lease, which the kernel grants only where there is no writer (fcntl(2), F_SETLEASE). The lease is
// given back at once, so a writer that comes meanwhile is held up for a moment at most. Any thread.
#pragma once

namespace zembrastel {

// `file` was opened for reading alone. False also where the system cannot tell: a file of another user, and a file
// system without leases.
[[nodiscard]] bool hasOpenWriter(int file) noexcept;

} // namespace zembrastel
