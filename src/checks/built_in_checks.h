// The checks that are built into the program: whether it works on this machine as promised.
//
// Each function runs on the main thread before any other part of the program, prints the results, and returns the exit
// code: 0 if all checks pass, 1 otherwise. The user's profiles and passwords stay untouched.
#pragma once

#include <cstdint>

namespace zembrastel {

inline constexpr std::int64_t defaultTestPort = 2121;

// Checks without a server.
[[nodiscard]] int runSelfTest();

// Checks with an FTP server, which must listen on this port of 127.0.0.1 and let the user "web" with the password
// "s3cret" write. No file is removed there.
[[nodiscard]] int runIntegrationTest(std::int64_t port);

} // namespace zembrastel
