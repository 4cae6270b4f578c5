// The version of the curl tool that carries out all transfers.
#pragma once

#include <string>

namespace zembrastel {

// "7.88.1"; empty if curl does not answer within half a second. Starts curl and waits for it.
[[nodiscard]] std::string curlVersion();

} // namespace zembrastel
