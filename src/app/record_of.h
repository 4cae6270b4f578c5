// What the saved state has recorded of one profile's files on both sides, for a comparison with the server.
//
// A function of its arguments; any thread.
#pragma once

#include "model/saved_state.h"
#include "transport/compare/server_check.h"

namespace zembrastel {

// Without what is not in the saved state: the announced files and what reviews left open.
[[nodiscard]] ServerRecord recordOf(const SavedState& state, const Uuid& profile);

} // namespace zembrastel
