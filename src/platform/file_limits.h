// The process's limits on files.
#pragma once

namespace zembrastel {

// Called first in a program. A write beyond the longest file that the system allows then fails like any other, rather
// than ending the program by SIGXFSZ; children get the signal back. And the program may open as many files as it can
// ask for: a batch of uploads keeps a copy of each of its files open.
void prepareFileLimits();

} // namespace zembrastel
