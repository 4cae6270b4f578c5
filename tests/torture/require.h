// How a torture program says that a promise is broken.
#pragma once

#include <stdexcept>
#include <string>

namespace zembrastel::testing {

inline void require(bool held, const std::string& broken) {
    if (!held) throw std::runtime_error(broken);
}

} // namespace zembrastel::testing
