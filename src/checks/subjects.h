// The checks of each subject, in files of the same names.
#pragma once

#include "checks/check.h"

namespace zembrastel {

struct TestServer;

// Without a server; nothing but temporary folders is touched.
[[nodiscard]] Checks exclusionChecks();
[[nodiscard]] Checks selectionChecks();
[[nodiscard]] Checks stateChecks();
[[nodiscard]] Checks scanChecks();
[[nodiscard]] Checks timestampChecks();

// With one. Making the checks already works on the server, and throws when that cannot be used.
[[nodiscard]] Checks reviewChecks(const TestServer& server);
[[nodiscard]] Checks browserChecks(const TestServer& server);

} // namespace zembrastel
