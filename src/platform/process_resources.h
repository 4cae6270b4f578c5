// What this process takes of the machine: open files, long files, core dumps and memory.
#pragma once

namespace zembrastel {

// Call at the start of main(), before any thread exists. Processes that are started later inherit the limits.
//
// A write beyond the longest file that the system allows fails with an error, instead of ending the program by SIGXFSZ;
// children get the signal's default back. The program may open as many files as the system lets it: a batch of uploads
// keeps a copy of each of its files open.
void prepareFileLimits();

// Call at the start of main(), before any thread exists.
//
// No crash of this process, or of any that it starts from now on, leaves a core dump: both this program and curl hold
// passwords in memory.
//
// PR_SET_DUMPABLE would not do. It ends with exec, so curl would not be covered; and it gives the process's /proc
// entries to root, so the desktop portal, which identifies its clients by them, would refuse the desktop program, and
// with it the dark appearance and the portal's dialogs.
void forbidCoreDumps();

// Gives freed memory back to the system: glibc keeps it in the pools of the threads that used it. Takes some
// milliseconds for 100 MB. Any thread.
void returnFreeMemory();

} // namespace zembrastel
