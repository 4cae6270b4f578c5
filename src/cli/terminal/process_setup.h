// What the program must see to before anything else, whoever started it and how.
#pragma once

namespace zembrastel::cli {

// Opens the standard streams that are closed on /dev/null, so that no file or pipe of the program takes their numbers;
// forbids core dumps, which would hold passwords; ignores SIGPIPE, so that a reader who goes away ends nothing; and has
// the ends of children kept for it. Called once, at the start of main().
void prepareProcess();

} // namespace zembrastel::cli
