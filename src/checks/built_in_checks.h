// The checks that the program carries with it: whether what it promises holds on this machine.
//
// Each runs on the main thread before anything else of the program is there, tells on standard output how it went, and
// returns the exit code: 0 when all checks hold, 1 otherwise. The user's profiles and passwords are left alone.
#pragma once

#include <cstdint>

namespace zembrastel {

inline constexpr std::int64_t defaultTestPort = 2121;

// Those that need no server.
[[nodiscard]] int runSelfTest();

// Those that need an FTP server, which must listen on this port of 127.0.0.1 and let the user "web" with the password
// "s3cret" write. Nothing is removed there.
[[nodiscard]] int runIntegrationTest(std::int64_t port);

} // namespace zembrastel
