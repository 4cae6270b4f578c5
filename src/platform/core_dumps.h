// Keeps what the program holds in memory out of core dumps.
#pragma once

namespace zembrastel {

// No crash of this process or of any it starts from now on leaves a core dump: both hold passwords, curl as much as the
// program itself. Called once, at the start of main().
//
// The process is not made undumpable (PR_SET_DUMPABLE) instead. That ends with exec, so curl would be left out; and it
// gives the process's /proc entries to root, after which the desktop portal, which tells its clients apart by them,
// refuses the desktop program, and with it the dark appearance and the portal's dialogs.
void forbidCoreDumps();

} // namespace zembrastel
