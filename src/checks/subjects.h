// The checks of each subject, in files of the same names.
#pragma once

#include "checks/check.h"

namespace zembrastel {

struct TestServer;

// Without a server. Only temporary folders are used.
[[nodiscard]] Checks exclusionChecks();
[[nodiscard]] Checks selectionChecks();
[[nodiscard]] Checks stateChecks();
[[nodiscard]] Checks scanChecks();
[[nodiscard]] Checks timestampChecks();

// With a server. This call works on the server already, and throws if it cannot be used.
[[nodiscard]] Checks reviewChecks(const TestServer& server);
[[nodiscard]] Checks browserChecks(const TestServer& server);

} // namespace zembrastel
