// What is recorded of the files of one profile, for a comparison with the server.
//
// A function of its arguments; any thread.
#pragma once

#include "model/saved_state.h"
#include "transport/compare/server_check.h"

namespace zembrastel {

// Only what the saved state has: not the announced files, and not what reviews left open.
[[nodiscard]] ServerRecord recordOf(const SavedState& state, const Uuid& profile);

} // namespace zembrastel
