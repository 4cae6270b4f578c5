// The memory of this process.
#pragma once

namespace zembrastel {

// Gives the memory that was freed back to the system: glibc keeps it in the pools of the threads that used it. Takes
// some milliseconds for 100 MB. Any thread.
void returnFreeMemory();

} // namespace zembrastel
